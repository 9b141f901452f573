// The compiler keeps the headers of lumenfold_headers() beside what it makes of this.
