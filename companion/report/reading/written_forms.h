/// A verdict in the forms that other programs and people read. Each is written report by report.
#pragma once

#include "companion/output.h"
#include "companion/report/judge.h"

namespace companion
{

/// JSON in the form of docs/kov-report.schema.json.
void begin_json(TextFile& file);
void write_json(TextFile& file, const Judged& judged, bool is_first);
/// With the names of the files that could not be read.
void end_json(TextFile& file, const std::vector<std::string>& unreadable);

/// JUnit XML: a test suite for each unit, a test case for each judged fact.
void begin_junit(TextFile& file);
void write_junit(TextFile& file, const Judged& judged);
void write_unreadable_junit(TextFile& file, const std::string& name);
void end_junit(TextFile& file);

/// A page that needs nothing beside it.
void begin_html(TextFile& file, bool several);
void write_html(TextFile& file, const Judged& judged);
void write_unreadable_html(TextFile& file, const std::string& name);
void end_html(TextFile& file);

} // namespace companion
