#include "config/file_format.h"

#include <random>

#include <gtest/gtest.h>

namespace
{

using namespace std::string_literals;

ConfigFileIndex index_of(std::string_view file, std::size_t piece = 1000)
{
    ConfigFileIndex index;
    for (; !file.empty(); file.remove_prefix(std::min(piece, file.size())))
        index.add(file.substr(0, piece));
    index.finish();
    return index;
}

const ConfigEntry& entry(std::string_view key)
{
    for (const ConfigEntry& candidate : config_entries) {
        if (candidate.key == key)
            return candidate;
    }
    ADD_FAILURE() << key;
    return config_entries.front();
}

TEST(ConfigFormat, RandomRecordsComeBack)
{
    std::mt19937 random{2026};
    for (int i = 0; i < 3000; ++i) {
        ConfigRecord record;
        for (std::uint8_t& byte : record.bytes)
            byte = static_cast<std::uint8_t>(random() % 3 == 0 ? 0 : random());
        const std::string text = current_section_text(record);
        ConfigRecord read;
        ASSERT_EQ(read_record(index_of(text), current_configuration, read), nullptr) << text;
        ASSERT_EQ(current_section_text(read), text);
    }
}

TEST(ConfigFormat, ValuesToBytesAndBack)
{
    const std::string blanks(98, ' ');
    const struct {
        const char* key;
        std::string text;
        std::int64_t raw;         ///< as the record holds it, -1 = the text is refused
        const char* written = ""; ///< when it is written again
    } cases[] = {
        {"DeviceEnable", "Y", 1, "Y"},
        {"DeviceEnable", "y", -1},
        {"DeviceEnable", "Yes", -1},
        {"DeviceEnable", "N ", -1},
        {"HVPS3Enable", "", -1},
        {"HvPsInterlockEnable", "Y,N,N,N", 0x04, "Y,N,N,N"},
        {"HvPsInterlockEnable", "N,Y,N,N", 0x08, "N,Y,N,N"},
        {"HvPsInterlockEnable", "N,N,Y,N", 0x01, "N,N,Y,N"},
        {"HvPsInterlockEnable", "y,n,Yes,no", 0x05, "Y,N,Y,N"},
        {"HeatControlInterlockEnable", "N,N,N,Y", 0x20, "N,N,N,Y"},
        {"HeatControlInterlockEnable", "N,Y,N,N", 0x80, "N,Y,N,N"},
        {"HvPsInterlockEnable", "Y,N,Y", -1},
        {"HvPsInterlockEnable", "Y,N,Y,N,Y", -1},
        {"HvPsInterlockEnable", ",Y,N,Y", -1},
        {"HvPsInterlockEnable", "Y,N,Y,", -1},
        {"HvPsInterlockEnable", "Y, N,Y,N", -1},
        {"HvPsInterlockEnable", "Y,N,Y,N" + blanks + ",Y", 0x05, "Y,N,Y,N"}, // behind 99 characters
        {"FanSwitchOverride", "Off", 1, "Off"},
        {"FanSwitchOverride", "On", 3, "On"},
        {"FanSwitchOverride", "ON", -1},
        {"HeaterLimitVolt", "100", 32120, "32.891"},
        {"HeaterLimitAmp", "-5", 65536 - 4882, "62.110"},
        {"HeaterLimitWatt", "50.000 W", 46566, "50.000"},
        {"HeaterLimitWatt", "1e300", 0, "0.000"},
        {"HeaterTemperature", "-273.15", 0, "-273.150"},
        {"HVPS1Voltage", "-5", 4294967296 - 999, "-1.000"},
        {"HVPS2Voltage", "-0.0001", 4294967296 - 999, "-1.000"},
        {"HVPS3Voltage", "00000000000000000012", 1000, "1.000"}, // behind 19 characters
        {"HVPS1MaxVoltStep", "-0.9996", 4294967296 - 999, "4294966.297"},
        {"HVPS1MaxVoltStep", "nan", -1},
        {"HVPS1MaxVoltStep", "1e999", -1},
        {"HVPS1MaxVoltStep", "none", -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string{c.key} + '=' + c.text);
        const ConfigEntry& row = entry(c.key);
        ConfigRecord record = {};
        ASSERT_EQ(set_entry(row, c.text, record), c.raw >= 0);
        if (c.raw < 0)
            continue;
        std::int64_t raw = 0;
        for (std::size_t i = row.size; i-- > 0;)
            raw = raw << 8 | record.bytes[row.offset + i];
        EXPECT_EQ(raw, c.raw);
        EXPECT_EQ(entry_text(row, record), c.written);
    }
    ConfigRecord fan_on_without_override = {};
    fan_on_without_override.bytes[2] = 2;
    EXPECT_EQ(entry_text(entry("FanSwitchOverride"), fan_on_without_override), "No");
}

TEST(ConfigFormat, EachMissingOrBrokenEntryIsReported)
{
    const std::string whole = set_section_text(7, "seven", {});
    for (const ConfigEntry& row : config_entries) {
        const std::string key = row.key;
        const bool is_volt = key.starts_with("HVPS") && key.find("Volt") != std::string::npos;
        for (const char* replacement : {"=?", "\n;"}) {
            std::string file = whole;
            file.replace(file.find('\n' + key + '=') + 1 + key.size(), 1, replacement);
            ConfigRecord record;
            EXPECT_STREQ(read_record(index_of(file), 7, record),
                         is_volt ? "HeaterEnable" : key.c_str());
        }
    }
}

TEST(ConfigFormat, FirstSectionAndFirstKeyCount)
{
    const std::string long_value(5000, '5');
    const struct {
        std::string file;
        const char* found; ///< value of HeaterLimitVolt of set 7, null = none
    } cases[] = {
        {"", nullptr},
        {"[Configuration7]\nHeaterLimitVolt=1", "1"},
        {"[Configuration7]\rName=a\rHeaterLimitVolt=1\rHeaterLimitAmp=2", "1"},
        {"\xEF\xBB\xBF[Configuration7] rest\r\n\r\nHeaterLimitVolt=1\r\n", "1"},
        {"\n\xEF\xBB\xBF[Configuration7]\nHeaterLimitVolt=1\n", nullptr},
        {"HeaterLimitVolt=1\n[Configuration7]\nHeaterEnable=Y\n", nullptr},
        {"[Configuration7]\nHeaterLimitVolt=1\nHeaterLimitVolt=2\n", "1"},
        {"[Configuration7]\nName=a\n[Configuration7]\nHeaterLimitVolt=1\n", nullptr},
        {"[Configuration07]\nHeaterLimitVolt=1\n[Configuration7h]\nHeaterLimitVolt=2\n", nullptr},
        {"[configuration7]\nHeaterLimitVolt=1\n[Configuration7\nHeaterLimitVolt=2\n", nullptr},
        {"[Configuration7]\n[\nHeaterLimitVolt=1\n", nullptr},
        {"[Configuration7]\nHeaterLimitVolt =1\n heaterLimitVolt=1\nHeaterLimitvolt=1", nullptr},
        {"[Configuration7]\n;HeaterLimitVolt=1\nHeaterLimitVolt= 2=3;4\n", " 2=3;4"},
        {"[Configuration7]\nName=\0[\nHeaterLimitVolt=1\0002\n"s, "1"},
        {"[Configuration7]" + long_value + "\nName=" + long_value + "\nHeaterLimitVolt=1\n", "1"},
        {"[Configuration1024]\nHeaterLimitVolt=1\n[Configuration0]\n[]\n[Configuration]", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.substr(0, 100));
        for (const std::size_t piece : {1U, 7U, 100000U}) {
            const ConfigFileIndex index = index_of(c.file, piece);
            const std::string* found = index.find(7, "HeaterLimitVolt");
            EXPECT_EQ(found == nullptr ? "(none)" : *found, c.found ? c.found : "(none)");
        }
    }
}

TEST(ConfigFormat, Names)
{
    const struct {
        std::string escaped, name;
        bool is_written = true; ///< this way
    } cases[] = {
        {"Bake\\tout\\r\\n\\\\", "Bake\tout\r\n\\"},
        {"\\x 5\\x1F\\x80\\xFF", "\x05\x1F\x80\xFF"},
        {" ~\x7F=;[", " ~\x7F=;["},
        {"a\\x5gb",
         "a\x05"
         "b",
         false},
        {"a\\xg5b", "a", false},
        {"a\\x5", "a", false},
        {"a\\qb", "a", false},
        {"a\\", "a", false},
    };
    for (const auto& [escaped, name, is_written] : cases) {
        EXPECT_EQ(unescaped_name(escaped), name) << escaped;
        EXPECT_TRUE(!is_written || escaped_name(name) == escaped) << escaped;
    }
}

} // namespace
