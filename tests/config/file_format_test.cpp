#include "config/file_format.h"

#include <gtest/gtest.h>

namespace
{

const ConfigEntry& entry(std::string_view key)
{
    for (const ConfigEntry& candidate : config_entries) {
        if (candidate.key == key)
            return candidate;
    }
    ADD_FAILURE() << key;
    return config_entries.front();
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
            ConfigFileIndex index;
            index.add(file);
            index.finish();
            EXPECT_STREQ(read_record(index, 7, record), is_volt ? "HeaterEnable" : key.c_str());
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
