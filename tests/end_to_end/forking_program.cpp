// A program that uses the device library to its very end, and so does one of the children that it
// forks; it closes all files and expects to get their numbers again.
#include "devlib/COM-KOV-CTRL.h"

#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

int main()
{
    std::uint8_t enabled = 0;
    (void)COM_KOV_CTRL_GetSWVersion();
    const pid_t idle = fork();
    if (idle == 0)
        return EXIT_SUCCESS;
    waitpid(idle, nullptr, 0);
    std::atexit([] { (void)COM_KOV_CTRL_GetErrorMessage(); });
    if (COM_KOV_CTRL_Open(3) != 0 || COM_KOV_CTRL_GetEnable(&enabled) != 0)
        return EXIT_FAILURE;
    close(STDIN_FILENO);
    for (int descriptor = STDERR_FILENO + 1; descriptor < 256; ++descriptor)
        close(descriptor);
    if (COM_KOV_CTRL_SetEnable(enabled) != 0 || open("/dev/null", O_RDONLY) != STDIN_FILENO)
        return EXIT_FAILURE;
    const pid_t child = fork();
    if (child == 0)
        return COM_KOV_CTRL_GetSWVersion() != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    int status = 0;
    waitpid(child, &status, 0);
    if (COM_KOV_CTRL_SetEnable(1) != 0 || COM_KOV_CTRL_Close() != 0)
        return EXIT_FAILURE;
    return WEXITSTATUS(status);
}
