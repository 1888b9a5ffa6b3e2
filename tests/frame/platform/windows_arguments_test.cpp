#include "frame/platform/windows/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

TEST(WindowsArguments, AreSplitAsTheRuntimeDoes)
{
    const struct {
        std::wstring line;
        std::vector<std::wstring> arguments;
    } cases[] = {
        {L"", {L""}},
        {L"kov", {L"kov"}},
        {L"kov 3 \t -p  ", {L"kov", L"3", L"-p"}},
        {LR"("C:\My files\kov.exe"  3)", {LR"(C:\My files\kov.exe)", L"3"}},
        {LR"(C:\kov\ -xs C:\a\\b.ini)", {LR"(C:\kov\)", L"-xs", LR"(C:\a\\b.ini)"}},
        {LR"(k "a b" c"d e"f "")", {L"k", L"a b", L"cd ef", L""}},
        {LR"(k a\"b "a\\" "a\\\"b" "a""b" x)", {L"k", L"a\"b", L"a\\", L"a\\\"b", L"a\"b", L"x"}},
        {LR"(k "never closed *)", {L"k", L"never closed *"}},
        {LR"(k *.ini \\)", {L"k", L"*.ini", LR"(\\)"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(split_command_line(c.line), c.arguments) << testing::PrintToString(c.line);
}

} // namespace
