#!/usr/bin/env bash
# What the companion writes, read by the programs for which it is meant, as far as they are installed:
# xmllint, python3-junitparser, sqlite3, Chromium. Says which of them are not.
#   readers_test.sh COMPANION SOURCE_FOLDER
set -uo pipefail
kov=$1 tests=$2/tests
report=$tests/protocol/expected_report.txt
source "$tests/support/script.sh"

"$kov" report check --simulated --json report.json --junit report.xml --html report.html "$report" >console.txt
[ $? -eq 1 ] || fail "the report of a run with a module in a wrong slot must fail: $(cat console.txt)"

if is_there xmllint; then
    xmllint --noout --schema "$tests/companion/junit.xsd" report.xml 2>problems || fail "$(cat problems)"
fi
python=
for candidate in python3 /usr/bin/python3; do # the packages of the system may belong to its own
    "$candidate" -c 'import junitparser' 2>/dev/null && python=$candidate
done
if [ -n "$python" ]; then
    "$python" - <<'END' || fail "junitparser reads something else"
import json
from junitparser import JUnitXml
suites = list(JUnitXml.fromfile("report.xml"))
report = json.load(open("report.json"))["reports"][0]
judged = [fact for fact in report["facts"] if fact["outcome"] != "not judged"]
cases = [case for suite in suites for case in suite]
assert len(cases) == len(judged) + 1, (len(cases), len(judged))
assert sum(suite.tests for suite in suites) == len(cases)
failing = [case.name for case in cases if case.result and case.result[0]._tag == "failure"]
assert failing == ["slot3/steps"], failing
END
else
    echo "not installed, left out: python3-junitparser"
fi

if is_there sqlite3; then
    sed "s/Base unit 200W/O'Neil's unit/" "$report" | "$kov" report trend --sql - - | sqlite3 names.db
    [ "$(sqlite3 names.db "SELECT identification FROM units WHERE unit = 'base'")" = \
        "KOV-BASE, O'Neil's unit, Rev. 1-00, simulated" ] || fail "sqlite3 reads another name"
    for _ in 1 2; do
        "$kov" report trend --sql - "$report" | sqlite3 lab.db || fail "sqlite3 refuses the statements"
    done
    counts=$(sqlite3 lab.db "SELECT (SELECT count(*) FROM reports), (SELECT count(*) FROM units),
        (SELECT value FROM facts WHERE key = 'slot1/output/positive/300V/set'),
        (SELECT count(*) > 400 FROM facts),
        (SELECT group_concat(kind || ' ' || key) FROM findings WHERE kind <> 'note')")
    [ "$counts" = '1|5|300.0|1|failure slot3/steps' ] || fail "the database holds $counts"
fi

# Chromium: how wide the page is in windows of a telephone and of a desk, what it says on its
# console, what it asks of others, and whether the printed page has an end.
check_page() {
    local width found
    for width in 360 794 1400; do
        python3 - "$width" <<'END' >frame.html
import html, sys
page = html.escape(open("report.html", encoding="utf-8").read())
print(f'''<!DOCTYPE html><iframe id=f width={sys.argv[1]} height=900 srcdoc="{page}"></iframe>
<script>f.onload = () => {{
  const page = f.contentDocument, lines = page.createRange()
  const broken = [...page.querySelectorAll("td.kind, td.unit")].filter(cell => {{
    lines.selectNodeContents(cell)
    return lines.getClientRects().length != 1
  }})
  document.title = broken.length ? "broken: " + broken[0].textContent :
    "scroll " + page.documentElement.scrollWidth + " of " + f.contentWindow.innerWidth
}}</script>''')
END
        in_browser --hide-scrollbars --dump-dom "file://$folder/frame.html" >dom.html
        found=$(sed -n 's/.*<title>scroll \([0-9]* of [0-9]*\)<.*/\1/p' dom.html | head -n 1)
        [ -n "$found" ] && [ "${found% of *}" -le "${found#* of }" ] ||
            fail "at $width pixels the page needs $found pixels, or a word is broken"
    done
    in_browser --print-to-pdf=page.pdf "file://$folder/report.html"
    expect_silent "the page"
    tail -c 9 page.pdf | grep -aq '%%EOF' || fail "the page could not be printed"
    if is_there pdftotext; then
        pdftotext page.pdf page.txt
        grep -q Signature page.txt && grep -q 'P/N 240321' page.txt || fail "the printed page is not whole"
    fi
}
if has_browser; then
    check_page
fi
exit "$failed"
