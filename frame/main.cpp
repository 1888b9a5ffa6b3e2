#include "frame/entry.h"
#include "frame/platform/platform.h"

int main(int argc, char** argv)
{
    platform::start();
    const std::span<char*> arguments = platform::arguments(argc, argv);
    return run_program(static_cast<int>(arguments.size()), arguments.data());
}
