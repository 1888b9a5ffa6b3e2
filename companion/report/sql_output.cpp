#include "companion/report/sql_output.h"

#include "companion/report/show.h"
#include "companion/text.h"
#include "frame/text/format.h"

#include <cmath>

namespace companion
{

namespace
{

constexpr const char* tables = R"(BEGIN;
CREATE TABLE IF NOT EXISTS reports (id TEXT PRIMARY KEY, created TEXT NOT NULL, file TEXT NOT NULL,
  verdict TEXT NOT NULL, simulated INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS units (report TEXT NOT NULL REFERENCES reports, unit TEXT NOT NULL,
  product_number TEXT NOT NULL, identification TEXT NOT NULL, type TEXT NOT NULL, PRIMARY KEY (report, unit));
CREATE TABLE IF NOT EXISTS facts (report TEXT NOT NULL REFERENCES reports, key TEXT NOT NULL,
  line INTEGER NOT NULL, text TEXT NOT NULL, value REAL, unit TEXT NOT NULL, deviation REAL, above REAL,
  below REAL, low REAL, high REAL, outcome TEXT NOT NULL, PRIMARY KEY (report, key));
)";

/// A text of UTF-8.
std::string quoted(std::string_view text)
{
    std::string sql = "'";
    for (const char c : text)
        sql += c == '\'' ? std::string{"''"} : std::string{c};
    return sql + '\'';
}

std::string number(double value)
{
    return std::isfinite(value) ? number_text(value) : "NULL";
}

/// What tells a report from others: its bytes.
std::string id_of(const Report& report)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : report.bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return formatted("%016llx", static_cast<unsigned long long>(hash));
}

} // namespace

void begin_sql(TextFile& file)
{
    file.write(tables);
}

void write_sql(TextFile& file, const Judged& judged)
{
    const Report& report = *judged.report;
    const std::string id = quoted(id_of(report));
    file.write("INSERT OR IGNORE INTO reports VALUES (" + id + ", " +
               quoted(utf8(report.text_of("run/created"))) + ", " +
               quoted(valid_utf8(report.name)) + ", " + quoted(verdict_name(judged.verdict)) +
               ", " + (report.is_simulated ? "1" : "0") + ");\n");
    for (const TestedUnit& unit : tested_units(report))
        file.write("INSERT OR IGNORE INTO units VALUES (" + id + ", " + quoted(unit.unit) + ", " +
                   quoted(unit.product_number) + ", " + quoted(unit.identification) + ", " +
                   quoted(unit.type) + ");\n");
    for (const Judgement& judgement : judged.judgements) {
        const Fact& fact = *judgement.fact;
        const Spread spread = fact.spread.value_or(Spread{NAN, NAN, NAN});
        const Band band = judgement.band.value_or(Band{NAN, NAN});
        file.write("INSERT OR IGNORE INTO facts VALUES (" + id + ", " + quoted(fact.key) + ", " +
                   std::to_string(fact.line) + ", " + quoted(utf8(fact.text)) + ", " +
                   number(fact.value.value_or(NAN)) + ", " + quoted(utf8(fact.unit)) + ", " +
                   number(spread.deviation) + ", " + number(spread.above) + ", " +
                   number(spread.below) + ", " + number(band.low) + ", " + number(band.high) +
                   ", " + quoted(outcome_name(judgement.outcome)) + ");\n");
    }
}

void end_sql(TextFile& file)
{
    file.write("COMMIT;\n");
}

} // namespace companion
