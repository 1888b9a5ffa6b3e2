/// printf formats that the compiler checks.
#pragma once

/// Has the compiler check the arguments of a printf format.
#if defined(__clang__)
#define PRINTF_FORMAT(format_index, first_index)                                                   \
    __attribute__((format(printf, format_index, first_index)))
#elif defined(__GNUC__) // where printf is not the standard's, this is the name of what is
#define PRINTF_FORMAT(format_index, first_index)                                                   \
    __attribute__((format(gnu_printf, format_index, first_index)))
#else
#define PRINTF_FORMAT(format_index, first_index)
#endif
