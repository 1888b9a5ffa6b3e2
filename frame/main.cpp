#include "frame/entry.h"
#include "frame/files/background_file.h"
#include "frame/platform/platform.h"

#include <cstdlib>

int main(int argc, char** argv)
{
    platform::start();
    const std::span<char*> arguments = platform::arguments(argc, argv);
    const int status = run_program(static_cast<int>(arguments.size()), arguments.data());
    if (BackgroundFile::any_given_up())
        std::_Exit(status); // the usual end would wait for that file
    return status;
}
