#pragma once

/// The whole program. Exactly one argument, whatever its text, shows the main window; none, or
/// more, asks for administrator rights, starts a second copy with the argument "start" and ends.
/// Options that Qt itself takes ("-platform …") do not count.
void RunProgram(int& argc, char** argv);
