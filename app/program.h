#pragma once

/// Runs the program. With exactly one argument, whatever it is, shows the main window. Otherwise
/// asks for administrator rights, starts a second instance with the argument "start" and returns.
/// Options of Qt itself ("-platform …") do not count.
void RunProgram(int& argc, char** argv);
