#include "frame/program.h"

#include <cstdarg>

Program program;

void note_alarm(const char* label, const char* text)
{
    program.alarm = {.label = label, .text = text, .end = console.place()};
}

void repeat_alarm()
{
    Alarm& alarm = program.alarm;
    if (alarm.label == nullptr || console.place() == alarm.end)
        return;
    console.print("%s: ", alarm.label);
    console.print(Color::bad, "%s", alarm.text);
    console.print("\n");
    alarm.end = console.place();
}

void progress(const char* format, ...)
{
    if (!program.debug)
        return;
    va_list arguments;
    va_start(arguments, format);
    console.vprint(Color::label, format, arguments);
    va_end(arguments);
}
