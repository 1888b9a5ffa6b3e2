/// The report of the acceptance test. Every line is written twice from one call, so that the two
/// cannot drift apart: on the console, and as its twin into a tab-separated file.
///
///     console  Used communication port: COM3, Data transfer rate: 9600 baud
///     file     Used communication port:<tab>COM3
///              <tab>Data transfer rate:<tab>9600 baud
///
/// The file is ISO 8859-1; see DEGREES_C_IN_FILE. What comes from the device must have been made
/// printable() before.
#pragma once

#include "frame/files/background_file.h"
#include "frame/terminal/colors.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// What stands behind a temperature in the file.
#define DEGREES_C_IN_FILE                                                                          \
    "\xB0"                                                                                         \
    "C"
/// Between a mean and its standard deviation, in the file.
#define PLUS_MINUS_IN_FILE "\xB1"

/// A text from the device as the file holds it: what ISO 8859-1 has no printable character for is
/// escaped byte by byte.
[[nodiscard]] std::string latin1_text(std::string_view text);

/// A labelled value.
struct ReportItem {
    const char* label; ///< without what divides it from the value
    std::string value;
    Color color = Color::value;
    const char* divider = ": ";  ///< on the console
    std::string file_value = {}; ///< where it differs from the one on the console
};

class Report
{
public:
    /// False when the file cannot be opened. A report of that name is kept beside it at first.
    [[nodiscard]] bool open(const char* file_name);
    /// False when it cannot be closed, or the last of it not be written. Only a complete one takes
    /// the place of the report before.
    [[nodiscard]] bool close(bool complete);

    /// False once a write has failed, which the user has been told.
    [[nodiscard]] bool is_good() const { return good_; }
    /// Has what was written so far reach the file, without waiting for it for long.
    void flush();

    /// What stands at the file's end when the test is left on the spot; see BackgroundFile.
    void set_last_words(BackgroundFile::LastWords words) { file_.set_last_words(words); }

    /// A line of one or more labelled values; in the file a line each, further ones indented.
    void items(std::span<const ReportItem> items) { write_items(items, "\t"); }
    void item(const ReportItem& single) { items({&single, 1}); }
    /// The same of values that have the same rank: in the file none of them is indented.
    void equal_items(std::span<const ReportItem> items) { write_items(items, ""); }

    /// A title and its labelled values: a line on the console; in the file a line for the title
    /// and, indented, one for each value.
    void group(const char* title, std::span<const ReportItem> items);

    /// A line of text, the same in both.
    void text(const std::string& line, Color color = Color::label);
    /// A line that begins a paragraph in the file: an empty line stands before it.
    void paragraph(const std::string& line);
    /// What comes out of a step that text() or paragraph() began: one tab deeper in the file.
    void result(const std::string& line, Color color);
    /// The heading of a unit.
    void heading(const std::string& on_console, const std::string& in_file);
    /// A row of a table: on the console labelled values side by side, without the first ones, which
    /// it has told before; in the file all the values alone, with tabs between them.
    void row(std::span<const ReportItem> items, std::size_t told_before);
    /// The labels of such rows, for the file.
    void columns(std::span<const char* const> labels);
    /// A line for the file alone, indented as the rest.
    void file_only(const std::string& line);

    /// One empty line in the file before what comes next, however often it is asked for.
    void end_section() { gap_is_due_ = has_text_; }

    /// When the test is expected to be over; for outlook().
    void expect_end_in(std::int64_t milliseconds);
    /// "About 38 min. left"; nothing before expect_end_in().
    [[nodiscard]] std::string outlook() const;

    /// From here on the items are those of a unit, one tab deeper in the file; or no more.
    void indent(bool deeper) { indentation_ = deeper ? "\t" : ""; }

private:
    /// In front of a unit's lines on the console.
    [[nodiscard]] const char* margin() const { return *indentation_ != '\0' ? "  " : ""; }
    void write_items(std::span<const ReportItem> items, const char* tab_of_further);
    void write(const std::string& text);

    BackgroundFile file_;
    std::string file_name_;
    const char* indentation_ = "";
    std::int64_t expected_end_ms_ = 0; ///< 0 = not known
    bool has_text_ = false;
    bool gap_is_due_ = false;
    bool good_ = true;
};
