/// Disks that are full.
#pragma once

/// For as long as it exists no file can become longer than that many bytes.
class FullDisk
{
public:
    static constexpr unsigned long long unlimited = ~0ULL;

    explicit FullDisk(unsigned long long longest);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
};
