/// Reports as SQL for SQLite. Loading a report again adds nothing.
#pragma once

#include "companion/output.h"
#include "companion/report/judge.h"

namespace companion
{

void begin_sql(TextFile& file);
void write_sql(TextFile& file, const Judged& judged);
void end_sql(TextFile& file);

} // namespace companion
