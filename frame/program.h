/// The program-wide state: one struct, one instance, set up by the entry and read everywhere.
#pragma once

#include "frame/terminal/console.h"
#include "frame/text/printf_format.h"

#include <cstdint>

/// Data rate that the switch for it sets when no rate is given, in baud.
inline constexpr std::uint32_t default_data_rate = 230400;

/// A state of the instrument that nobody must overlook, as it has been told.
struct Alarm {
    const char* label = nullptr; ///< null = none
    const char* text = nullptr;
    Place end; ///< behind its line
};

/// What every command may look at. Only the entry, the general switches and the session write it.
struct Program {
    bool run = true;    ///< cleared by "terminate" and by a session that could not be opened
    bool quiet = false; ///< drops the prompts that tell how to quit, and some success lines
    bool debug = false; ///< turns the progress lines on that precede library calls
    bool help = false;  ///< the usage text is wanted at the end
    bool port_open = false;
    std::uint16_t port = 0;         ///< COM port number as typed; checked when the port is opened
    std::uint32_t data_rate = 9600; ///< in baud
    Alarm alarm;                    ///< see note_alarm()
};

extern Program program;

/// Notes an alarm whose line, "label: text", has just been printed.
void note_alarm(const char* label, const char* text);

/// Prints the alarm's line once more, if there is one and something stands below it.
void repeat_alarm();

/// Prints a progress line, in debug mode only.
void progress(const char* format, ...) PRINTF_FORMAT(1, 2);
