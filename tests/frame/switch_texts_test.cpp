// The switches as the rows of the tables have them, and as the user reads and completes them: in
// the usage text, the manual page and the completions of bash and zsh.
#include "frame/entry.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace
{

using Spellings = std::set<std::string>;

std::string source_file(const char* name)
{
    return contents(std::string{KOV_SOURCE_FOLDER} + '/' + name);
}

/// What the pattern's first group matches.
Spellings matches(const std::string& text, const char* pattern)
{
    const std::regex expression{pattern};
    Spellings found;
    for (std::sregex_iterator match{text.begin(), text.end(), expression}, end; match != end;
         ++match)
        found.insert((*match)[1]);
    return found;
}

Spellings spellings_in_usage()
{
    Trial trial;
    trial.run("");
    Spellings found;
    // Entries stand in columns; what is before the colon names one switch or several.
    const std::string columns = std::regex_replace(trial.screen(), std::regex{", +"}, "  ");
    for (const std::string& entry : matches(columns, "(\\S+( \\S+)*)")) {
        const std::string names = entry.substr(0, entry.find(':', 1));
        found.merge(matches(names, "(?:^|[/,])([^\\s/,]+)"));
    }
    return found;
}

Spellings spellings_in_manual()
{
    std::string rows;
    for (const std::string& row : matches(source_file("docs/KOV-Controller.1"), "\n(\\.It Fl .*)"))
        rows += row + '\n';
    return matches(std::regex_replace(rows, std::regex{R"(\\&)"}, ""), "Fl (\\S+)");
}

Spellings spellings_for_bash()
{
    const std::string script = source_file("completions/KOV-Controller.bash");
    return matches(script.substr(0, script.find("() {")), "[\\s(']-([^\\s')]+)(?=[\\s')])");
}

Spellings spellings_for_zsh()
{
    Spellings found;
    for (const std::string& names :
         matches(source_file("completions/_KOV-Controller"), "'(-\\S+) [-nah] "))
        found.merge(matches(names, "-([^,]+)"));
    return found;
}

/// What the usage text puts behind the letters for a value in the same argument.
std::vector<const char*> placeholders(Attached attached)
{
    static const std::map<Attached, std::vector<const char*>> behind = {
        {Attached::nothing, {""}},
        {Attached::optional_number, {"u", "n"}},
        {Attached::optional_count, {"u", "n"}},
        {Attached::optional_set_number, {"u", "n"}},
        {Attached::address, {"a", "m"}},
        {Attached::hv_address, {"a", "m"}},
        {Attached::hv_address_with_optional_ranges, {"a", "m"}},
        {Attached::real, {"v", "a", "w"}},
        {Attached::set_number, {"u"}},
    };
    return behind.at(attached);
}

std::string in_lower_case(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

TEST(SwitchTexts, NameEverySwitchInItsFormsAndNoOther)
{
    const Spellings usage = spellings_in_usage();
    const Spellings manual = spellings_in_manual();
    const Spellings bash = spellings_for_bash();
    const Spellings zsh = spellings_for_zsh();
    Spellings rows;
    const auto check = [&](const std::string& letters, const Switch& row) {
        rows.insert(letters);
        EXPECT_TRUE(manual.contains(letters)) << "the manual page lacks -" << letters;
        EXPECT_TRUE(bash.contains(letters)) << "the completion of bash lacks -" << letters;
        EXPECT_TRUE(zsh.contains(letters)) << "the completion of zsh lacks -" << letters;
        const std::vector<const char*> behind = placeholders(row.attached);
        const bool told = std::any_of(behind.begin(), behind.end(), [&](const char* placeholder) {
            return usage.contains(letters + placeholder);
        });
        // The usage text has this one with a capital only.
        EXPECT_TRUE(told || letters == "vg") << "the usage text lacks -" << letters;
    };
    for (const SwitchTable table : all_switch_tables()) {
        for (const Switch& row : table) {
            if (row.form != Form::lower)
                check(row.letters, row);
            if (row.form != Form::capital)
                check(in_lower_case(row.letters), row);
        }
    }
    EXPECT_EQ(manual, rows);
    EXPECT_EQ(bash, rows);
    EXPECT_EQ(zsh, rows);
}

} // namespace
