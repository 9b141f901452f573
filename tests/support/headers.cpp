// The precompiled headers of lumenfold_headers() are built with this file.
