#include "companion/page.h"

#include "companion/text.h"

namespace companion
{

namespace
{

constexpr const char* style = R"(
:root { color-scheme: light dark; --paper: #fff; --ink: #1b1f24; --faint: #667; --rule: #d5d9de;
  --soft: #f2f4f6; --good: #187a3a; --bad: #b3261e; --warn: #8a5a00; --mark: #1f5fa8; --band: #d7ecdc; }
@media screen and (prefers-color-scheme: dark) { :root { --paper: #15181c; --ink: #e6e8eb;
  --faint: #9aa3ad; --rule: #343a42; --soft: #1e2329; --good: #5fcf86; --bad: #ff8a80; --warn: #f0b849;
  --mark: #7db4f5; --band: #1f3d2a; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink); font: 15px/1.45 system-ui, sans-serif; }
main { max-width: 1100px; margin: 0 auto; padding: 1rem; overflow-wrap: anywhere; }
h1 { font-size: 1.1rem; font-weight: 600; margin: 0; }
h2 { font-size: 1.15rem; margin: 2rem 0 .5rem; border-bottom: 2px solid var(--rule); }
p { margin: .3rem 0; }
.verdict { border-left: .6rem solid var(--tone); background: var(--soft); padding: .8rem 1rem; }
.verdict strong { display: block; font-size: 2.6rem; line-height: 1.1; color: var(--tone); }
.pass { --tone: var(--good); } .fail { --tone: var(--bad); } .incomplete, .none { --tone: var(--warn); }
.simulated { background: var(--warn); color: var(--paper); padding: .3rem 1rem; font-weight: 600; }
.faint { color: var(--faint); font-size: .9em; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; }
th { text-align: left; font-weight: 600; color: var(--faint); font-size: .85em; }
th, td { padding: .18rem .5rem .18rem 0; border-bottom: 1px solid var(--rule); vertical-align: top; }
tr.bad td { color: var(--bad); font-weight: 600; } tr.warn td { color: var(--warn); }
td.picture { width: 130px; } td.outcome { white-space: nowrap; width: 6rem; }
td.kind, td.unit { white-space: nowrap; }
.key { font-family: ui-monospace, monospace; font-size: .88em; }
.others { columns: 3 20rem; font-size: .85em; padding: 0; list-style: none; margin: .4rem 0; }
.others li { break-inside: avoid; }
svg { display: block; } svg text { fill: var(--ink); font: 11px system-ui, sans-serif; }
.diagram { width: 100%; max-width: 640px; margin: .6rem 0; } .diagram .name { font-weight: 600; font-size: 12px; }
.mark { text-anchor: middle; } .mark.end { text-anchor: end; }
.grid { stroke: var(--rule); } .band { fill: var(--band); } .line { fill: none; stroke: var(--mark); }
.point { fill: var(--mark); } .bad.point, .value.bad { fill: var(--bad); }
.where { width: 120px; height: 12px; margin-top: .35rem; } .trend { width: 160px; height: 28px; }
.track { fill: var(--rule); } .good { fill: var(--good); opacity: .55; }
.reach { stroke: var(--ink); stroke-width: 1.5; } .value { fill: var(--ink); }
.bar.voltage { fill: var(--mark); } .bar.current { fill: var(--warn); } .bar.power { fill: var(--good); }
.signature { display: grid; grid-template-columns: 2fr 1fr 2fr; gap: 2rem; margin-top: 4rem; break-inside: avoid; }
.signature span { border-top: 1px solid var(--ink); padding-top: .2rem; }
@media (max-width: 44rem) { thead { display: none; } tr { display: block; padding: .3rem 0; border-bottom: 1px solid var(--rule); }
  td, td.picture, td.outcome { display: block; width: auto; border: 0; padding: 0; white-space: normal; } .signature { grid-template-columns: 1fr; gap: 3rem; } }
@page { size: A4; margin: 15mm; }
@media print { body { font-size: 9pt; } main { padding: 0; max-width: none; } h2 { break-after: avoid; }
  tr, svg { break-inside: avoid; } main + main { break-before: page; } .verdict, .band, .track, .good, .bar { print-color-adjust: exact; } }
)";

} // namespace

void begin_page(TextFile& file, const std::string& title, const std::string& head)
{
    file.write("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
               "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
               "<link rel=\"icon\" href=\"data:,\">\n<title>" +
               escaped_markup(title) + "</title>\n<style>");
    file.write(style);
    file.write("</style>\n" + head + "</head>\n<body>\n");
}

void end_page(TextFile& file)
{
    file.write("</body>\n</html>\n");
}

} // namespace companion
