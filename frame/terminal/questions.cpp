#include "frame/terminal/questions.h"

#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"

#include <optional>

YesNo ask_yes_no()
{
    flush_keys();
    const YesNo answer = read_yes_no();
    expect_line_end();
    flush_keys();
    if (answer == YesNo::interrupted)
        print_interrupted();
    else
        console.print("%c\r\n", answer == YesNo::yes ? 'Y' : 'N');
    return answer;
}

YesNo read_yes_no()
{
    for (;;) {
        switch (folded(read_key())) {
        case 'Y':
            return YesNo::yes;
        case 'N':
            return YesNo::no;
        case key::escape:
            return YesNo::interrupted;
        default:
            break;
        }
    }
}

YesNo read_confirmation()
{
    flush_keys();
    const std::optional<char> answer = read_answer();
    if (!answer)
        return YesNo::interrupted;
    return folded(*answer) == 'Y' ? YesNo::yes : YesNo::no;
}

void print_interrupted()
{
    print_warning("interrupted");
}
