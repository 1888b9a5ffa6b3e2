#include "frame/entry.h"
#include "frame/platform.h"

int main(int argc, char** argv)
{
    platform::start();
    return run_program(argc, argv);
}
