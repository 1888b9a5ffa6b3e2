#include "frame/questions.h"

#include "frame/console.h"
#include "frame/keys.h"

YesNo ask_yes_no()
{
    flush_keys();
    int key = 0;
    do
        key = folded(read_key());
    while (key != 'Y' && key != 'N' && key != key::escape);
    expect_line_end();
    flush_keys();
    if (key == key::escape) {
        print_interrupted();
        return YesNo::interrupted;
    }
    console.print("%c\r\n", key);
    return key == 'Y' ? YesNo::yes : YesNo::no;
}

void print_interrupted()
{
    console.print(Color::warning, "interrupted");
    console.print("\r\n");
}

void print_wrong_value(const char* name_of_value)
{
    console.print(Color::warning, "Wrong %s specified", name_of_value);
    console.print("\r\n");
}
