/// Trials of the configuration commands, with some sets to begin with.
#pragma once

#include "devlib/COM-KOV-CTRL.h"
#include "tests/support/trial.h"

/// Marks a set and names it, as an earlier run could have.
inline void make_set(Trial& trial, unsigned number, const std::string& name, bool active,
                     bool valid = true)
{
    const auto index = static_cast<std::uint16_t>(number - 1);
    std::string field = name;
    field.resize(203);
    EXPECT_EQ(COM_KOV_CTRL_Open(3), 0);
    EXPECT_EQ(COM_KOV_CTRL_SetConfigName(index, field.c_str()), 0);
    EXPECT_EQ(COM_KOV_CTRL_SetConfigFlags(index, active ? 1 : 0, valid ? 1 : 0), 0);
    EXPECT_EQ(COM_KOV_CTRL_Close(), 0);
    trial.calls.clear();
}
