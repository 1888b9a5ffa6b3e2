"use strict";
// Draws the panels of a page from the data that stands in it.

const drawing = JSON.parse(document.getElementById("data").textContent);
const colorOf = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

/// "0:01:02.345" of seconds.
function timeText(seconds) {
  const ms = Math.round(Math.abs(seconds) * 1000);
  const two = value => String(value).padStart(2, "0");
  const rest = ms % 1000 ? "." + String(ms % 1000).padStart(3, "0") : "";
  return (seconds < 0 ? "-" : "") + Math.floor(ms / 3600000) + ":" + two(Math.floor(ms / 60000) % 60) +
    ":" + two(Math.floor(ms / 1000) % 60) + rest;
}

/// The date of so many seconds behind the start, in the zone of the start.
function dateText(start, seconds) {
  const zone = start.slice(23);
  const minutes = (zone[0] == "-" ? -1 : 1) * (60 * Number(zone.slice(1, 3)) + Number(zone.slice(4, 6)));
  const shown = Date.parse(start) + Math.round(seconds * 1000) + minutes * 60000;
  return new Date(shown).toISOString().slice(0, 23) + zone;
}

function xText(picture, x) {
  if (x == null)
    return "--";
  if (!picture.overTime)
    return x + " " + picture.xUnit;
  const only = drawing.starts.length == 1 ? ", " + dateText(drawing.starts[0], x) : "";
  return timeText(x) + only;
}

/// The columns of a curve; its times are the milliseconds from each point to the next. Of points at
/// one time only the last would be drawn, so each is a little later than the one before.
function columnsOf(picture, curve) {
  if (!picture.overTime)
    return [curve.x, curve.y];
  let ms = 0, shown = -Infinity;
  return [curve.x.map(step => (shown = Math.max(ms += step, shown + 0.001)) / 1000), curve.y];
}

/// Curves over the times of all. A gap reaches from sample to sample, whatever others have between.
function joined(curves) {
  const expand = 2;
  return uPlot.join(curves, curves.map(() => [expand, expand]));
}

/// The point of a curve that is next to the cursor; a gap has none. Curves have times of their own:
/// where another one has a point, this one is undefined.
function nearest(plot, series, index) {
  const y = plot.data[series];
  if (series == 0 || y[index] != null)
    return index;
  let before = index, behind = index;
  while (before >= 0 && y[before] === undefined)
    --before;
  while (behind < y.length && y[behind] === undefined)
    ++behind;
  const x = plot.data[0], at = plot.posToVal(plot.cursor.left, "x");
  const isGood = i => i >= 0 && i < y.length && y[i] != null;
  if (y[before] === null || y[behind] === null || !isGood(before) && !isGood(behind))
    return null;
  if (!isGood(before) || !isGood(behind))
    return isGood(before) ? before : behind;
  return at - x[before] < x[behind] - at ? before : behind;
}

/// The points of a curve between two gaps within one pixel: of these its line shows nothing.
function lonePoints(plot, series, areAllShown) {
  const [first, last] = plot.series[series].idxs, x = plot.data[0], y = plot.data[series], lone = [];
  for (let begin = first, i = first; !areAllShown && i <= last + 1; ++i) {
    if (i <= last && y[i] !== null)
      continue;
    const isNarrow = begin < i && plot.valToPos(x[i - 1], "x") - plot.valToPos(x[begin], "x") < 1;
    for (; isNarrow && begin < i; ++begin)
      if (y[begin] !== undefined)
        lone.push(begin);
    begin = i + 1;
  }
  return lone.length > 0 ? lone : null;
}

/// All panels of a picture show the same part of its axis.
function zoomOthers(plots, plot, scale) {
  if (scale != "x" || plots.isZooming)
    return;
  plots.isZooming = true;
  const {min, max} = plot.scales.x;
  for (const other of plots)
    if (other != plot)
      other.setScale("x", {min, max});
  plots.isZooming = false;
}

function axis(more) {
  return Object.assign({stroke: () => colorOf("--ink"), grid: {stroke: () => colorOf("--rule"), width: 1},
    ticks: {stroke: () => colorOf("--rule"), width: 1}}, more);
}

function makePanel(picture, panel, plots, key) {
  const heading = document.createElement("h2"), place = document.createElement("div");
  heading.textContent = panel.unit;
  document.getElementById("panels").append(heading, place);
  const series = panel.curves.map((curve, i) => ({
    label: curve.label, stroke: () => colorOf("--curve" + i % 8), width: 1,
    points: picture.overTime ? {filter: lonePoints} : {show: true},
    value: (plot, y) => y == null ? "--" : y + " " + panel.unit,
  }));
  const marks = picture.overTime ? {values: (plot, times) => times.map(timeText), space: 90} : {};
  const all = {min: picture.low, max: picture.high};
  const plot = new uPlot({
    width: place.clientWidth, height: 260,
    cursor: {sync: {key, setSeries: false}, drag: {x: true, y: false}, dataIdx: nearest,
      bind: {dblclick: () => null}}, // it would show what this panel has, not what all have
    scales: {x: {time: false}},
    axes: [axis(marks), axis({size: 80})],
    series: [{label: picture.xName, value: (u, x) => xText(picture, x)}, ...series],
    hooks: {setScale: [(u, scale) => zoomOthers(plots, u, scale)]},
  }, joined(panel.curves.map(curve => columnsOf(picture, curve))), place);
  plot.over.addEventListener("dblclick", () => plot.setScale("x", all));
  plot.setScale("x", all);
  plots.push(plot);
}

const plots = drawing.pictures.flatMap((picture, i) => {
  const together = [];
  for (const panel of picture.panels)
    makePanel(picture, panel, together, "picture" + i);
  return together;
});
addEventListener("resize", () => plots.forEach(plot =>
  plot.setSize({width: plot.root.parentElement.clientWidth, height: 260})));
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () =>
  plots.forEach(plot => plot.redraw()));
