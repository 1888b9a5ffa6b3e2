#include "tests/support/full_disk.h"

#include <gtest/gtest.h>

FullDisk::FullDisk(unsigned long long)
{
    ADD_FAILURE() << "files cannot be limited here: leave this test out";
}

FullDisk::~FullDisk() = default;
