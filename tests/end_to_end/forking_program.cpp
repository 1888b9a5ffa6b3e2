// A program that uses the device library, and so does the child that it forks.
#include "devlib/COM-KOV-CTRL.h"

#include <cstdint>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

int main()
{
    std::uint8_t enabled = 0;
    (void)COM_KOV_CTRL_GetSWVersion();
    if (COM_KOV_CTRL_Open(3) != 0 || COM_KOV_CTRL_GetEnable(&enabled) != 0)
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
