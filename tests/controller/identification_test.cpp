#include "tests/support/trial.h"

namespace
{

struct Case {
    const char* letter;
    const char* progress;
    const char* reply;
    const char* line;
};

constexpr Case cases[] = {
    {"I", "product identification", "reply GetProductID.identification \"KOV 7\\x1b\"",
     "Product identification: {W}KOV 7\\e{.}\n"},
    {"N", "product number", "reply GetProductNo.number -1", "Product number: {W}-1{.}\n"},
    {"M", "manufacturing date", "reply GetManufDate.week 7",
     "Product manufacturing date: {W}CW07 2024{.}\n"},
    {"D", "firmware date", "reply GetFwDate.date \"Jul 24 2026\"",
     "Firmware date: {W}Jul 24 2026{.}\n"},
    {"F", "firmware version", "reply GetFwVersion.version 0105h", "Firmware version: {W}1-05{.}\n"},
    {"H", "hardware version", "reply GetHwVersion.version 0A00h",
     "Hardware version: {W}10-00{.}\n"},
    {"E", "device type", "reply GetDevType.type 8ED6h", "Device type: {W}8ED6h{.}\n"},
    {"T", "hardware type", "reply GetHwType.type F100h", "Hardware type: {W}0000F100h{.}\n"},
};

TEST(Identification, OneLineAValue)
{
    for (const Case& c : cases) {
        const std::string lines = std::string{"Getting "} + c.progress + ":\n" + c.line;
        for (const char* first : {"P", "p"})
            EXPECT_THAT(display_of(std::string{"-pd -g -"} + first + c.letter, {c.reply}),
                        HasSubstr("{.}\n" + lines));
    }
}

TEST(Identification, AllInTheKnownOrderWithoutWhatFails)
{
    Trial trial{"fail GetFwDate at 1 text \"no answer\""};
    std::string expected;
    for (const Case& c : cases) {
        trial.instrument(c.reply);
        expected += std::string_view{c.letter} == "D"
                        ? error_line("GetFwDate", "09:26:53.589", "no answer") +
                              "{M}last I/O error message: time-out, last communication port error: "
                              "receive time-out{.}\n"
                        : c.line;
    }
    trial.run("3 -P -T");
    EXPECT_EQ(trial.display(), expected);
}

} // namespace
