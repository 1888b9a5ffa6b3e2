/// The text of configuration files: a section for each record, "[CurrentConfiguration]" or
/// "[Configuration%u]" with the number of the set, in it a line "Key=value" for each entry; that of
/// a set begins with its name.
#pragma once

#include "config/record.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Stands for the current configuration where otherwise the number of a set stands, 1..1023.
inline constexpr unsigned current_configuration = 0;

/// The key of a set's name.
inline constexpr const char* name_key = "Name";

/// The section's name without its brackets.
[[nodiscard]] std::string section_name(unsigned number);

// ---- Writing ----

/// A set's name as it stands in the file, in one line of printable ASCII (but DEL).
[[nodiscard]] std::string escaped_name(std::string_view name);

/// Header and entries of the current configuration.
[[nodiscard]] std::string current_section_text(const ConfigRecord& record);

/// Header, name and entries of a set.
[[nodiscard]] std::string set_section_text(unsigned number, std::string_view name,
                                           const ConfigRecord& record);

// ---- Reading ----

/// The inverse of escaped_name(); ends where something stands behind a backslash that
/// escaped_name() does not put there.
[[nodiscard]] std::string unescaped_name(std::string_view text);

/// What a configuration file says. It gets the file's bytes once, in pieces of any size, and keeps
/// of them what can be asked for: any file, however large, fits.
///
/// The first section of a name counts, and in it the first line of a key; lookups know no order.
/// Lines end with LF, CR or CR LF. A line that begins with "[" ends a section, one with ";" is a
/// comment. A byte-order mark before everything is skipped. A zero byte ends the value it stands
/// in.
class ConfigFileIndex
{
public:
    ConfigFileIndex();

    void add(std::string_view bytes);
    /// The last line may have no end.
    void finish() { take_line(); }

    /// The value of a key in the section of a set or of the current configuration, its first 1023
    /// characters; null when the section or the key is not there.
    [[nodiscard]] const std::string* find(unsigned number, std::string_view key) const;

private:
    struct Section {
        bool found = false;
        std::vector<std::pair<const char*, std::string>> entries; ///< key and value
    };

    void take_line();
    void begin_section(std::string_view line);
    void take_entry(std::string_view line);

    std::vector<Section> sections_; ///< by number
    Section* section_ = nullptr;    ///< the lines belong to it; null = to none that counts
    std::size_t next_key_ = 0;      ///< the key that most likely comes next
    std::string line_;              ///< the line so far, as much of it as can matter
    bool first_line_ = true;
};

/// Reads all entries of a section into the record. Null on success, else what the first entry that
/// is missing or does not convert is called in an error message.
[[nodiscard]] const char* read_record(const ConfigFileIndex& index, unsigned number,
                                      ConfigRecord& record);
