/// Keys from the input records of a console of Windows, as the bytes that a terminal sends for
/// them: the key decoder knows only those.
#pragma once

#include <string>
#include <windows.h>

class ConsoleKeys
{
public:
    /// The bytes of one record, as often as the key was repeated; empty when it means nothing.
    [[nodiscard]] std::string bytes_of(const KEY_EVENT_RECORD& record);

    /// Forgets the first half of a character.
    void forget() { high_surrogate_ = 0; }

private:
    [[nodiscard]] std::string single(const KEY_EVENT_RECORD& record);
    [[nodiscard]] std::string character(wchar_t unit);

    wchar_t high_surrogate_ = 0;
};
