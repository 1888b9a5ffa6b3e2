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
CREATE TABLE IF NOT EXISTS findings (report TEXT NOT NULL REFERENCES reports DEFERRABLE INITIALLY DEFERRED,
  unit TEXT NOT NULL, key TEXT NOT NULL, kind TEXT NOT NULL, value TEXT NOT NULL, expected TEXT NOT NULL,
  line INTEGER NOT NULL, reason TEXT NOT NULL);
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

/// Findings belong to one verdict: those of a report that is there already stay as they are.
void write_findings(TextFile& file, const Judged& judged, const std::string& id)
{
    const std::string unless_there =
        " WHERE NOT EXISTS (SELECT 1 FROM reports WHERE id = " + id + ");\n";
    for (const Finding& finding : judged.findings) {
        file.write("INSERT INTO findings SELECT " + id);
        for (const std::string_view text :
             {unit_of(finding.key), std::string_view{finding.key},
              std::string_view{finding_kind_name(finding.kind)}, std::string_view{finding.value},
              std::string_view{finding.limit}})
            file.write(", " + quoted(text));
        file.write(", " + std::to_string(finding.line) + ", " + quoted(valid_utf8(finding.reason)) +
                   unless_there);
    }
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
    write_findings(file, judged, id); // while its report is not there yet
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
