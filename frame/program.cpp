#include "frame/program.h"

#include "frame/terminal/console.h"

#include <cstdarg>

Program program;

void progress(const char* format, ...)
{
    if (!program.debug)
        return;
    va_list arguments;
    va_start(arguments, format);
    console.vprint(Color::label, format, arguments);
    va_end(arguments);
}
