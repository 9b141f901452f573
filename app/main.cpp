#include "app/program.h"

int main(int argc, char** argv)
{
    RunProgram(argc, argv);
    return 0; // always: the event loop's exit code is not used
}
