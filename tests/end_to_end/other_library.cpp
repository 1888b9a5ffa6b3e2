// A device library that is not ours: just enough to be opened and to tell who it is.
#include "devlib/COM-KOV-CTRL.h"

#include <cstdio>

uint16_t COM_KOV_CTRL_GetSWVersion()
{
    return 0x0100;
}

int32_t COM_KOV_CTRL_Open(uint8_t)
{
    return 0;
}

int32_t COM_KOV_CTRL_Close()
{
    return 0;
}

int32_t COM_KOV_CTRL_GetDevType(uint16_t* type)
{
    *type = 0x8ED6;
    return 0;
}

int32_t COM_KOV_CTRL_GetProductID(char* identification)
{
    std::snprintf(identification, sizeof "Another library", "Another library");
    return 0;
}
