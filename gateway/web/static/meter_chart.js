// SPDX-License-Identifier: Apache-2.0
// Charts of stored values, drawn by Chart.js, which is loaded before.
//
//   <div class="chart"><canvas data-chart="/api/..." data-chart-summary="ID"></canvas></div>
//       where the values come from; the element ID tells them in words
//   <canvas ... data-chart-step>
//       values hold until the next one
//   <form class="range" data-chart-form="ID">
//       of the canvas ID: its fields become parameters of the address, without a new page
//
// The values: {"label": "...", "unit": "Wh", "points": [[seconds UTC, number or null], ...]} in the order of time; null is
// a gap. Times are shown as the reader's local time.
"use strict";

(() => {
  const MINUTE = 60;
  const HOUR = 60 * MINUTE;
  const DAY = 24 * HOUR;
  // Distances of the marks on the axis of time.
  const STEPS = [
    ...[1, 2, 5, 10, 15, 30],
    ...[1, 2, 5, 10, 15, 30].map((count) => count * MINUTE),
    ...[1, 2, 3, 6, 12].map((count) => count * HOUR),
    ...[1, 2, 3, 7, 14, 30, 90, 365].map((count) => count * DAY),
  ];
  const MARK_PIXELS = 70;
  const FEWEST_MARKS = 3;
  const DOTS_UP_TO = 60;  // points that are shown one by one
  const LANGUAGE = document.documentElement.lang || undefined;

  const number = new Intl.NumberFormat(LANGUAGE, {maximumFractionDigits: 6, useGrouping: false});
  const clock = format({hour: "2-digit", minute: "2-digit"});
  const seconds = format({hour: "2-digit", minute: "2-digit", second: "2-digit"});
  const day = format({day: "numeric", month: "short"});
  const month = format({month: "short", year: "numeric"});
  const full = format({year: "numeric", month: "short", day: "numeric", hour: "2-digit", minute: "2-digit"});

  function format(parts) {
    const how = new Intl.DateTimeFormat(LANGUAGE, {hourCycle: "h23", ...parts});
    return (utc) => how.format(new Date(1000 * utc));
  }

  // ---- the axis of time

  function stepOf(from, to, width) {
    const most = Math.max(FEWEST_MARKS, Math.floor(width / MARK_PIXELS));
    return STEPS.find((step) => (to - from) / step <= most) || STEPS[STEPS.length - 1];
  }

  // Round times in local time; days are counted by the calendar, since some have 23 or 25 hours.
  function marksOf(from, to, step) {
    const marks = [];
    const start = new Date(1000 * from);
    if (step >= DAY) {
      start.setHours(0, 0, 0, 0);
      for (; start / 1000 <= to; start.setDate(start.getDate() + step / DAY))
        if (start / 1000 >= from) marks.push(start / 1000);
      return marks;
    }
    const offset = -MINUTE * start.getTimezoneOffset();
    for (let at = Math.ceil((from + offset) / step) * step - offset; at <= to; at += step) marks.push(at);
    return marks;
  }

  function labelOf(utc, index, ticks) {
    const step = ticks.length > 1 ? ticks[1].value - ticks[0].value : DAY;
    if (step >= 27 * DAY) return month(utc);
    if (step >= 23 * HOUR) return day(utc);
    const time = step < MINUTE ? seconds(utc) : clock(utc);
    const isNewDay = index > 0 && day(utc) !== day(ticks[index - 1].value);
    return isNewDay || index === 0 ? [time, day(utc)] : time;
  }

  function timeScale(points) {
    const first = points.length ? points[0][0] : 0;
    const last = points.length ? points[points.length - 1][0] : 1;
    return {
      type: "linear",
      min: first === last ? first - HOUR : first,
      max: first === last ? last + HOUR : last,
      afterBuildTicks: (axis) => {
        axis.ticks = marksOf(axis.min, axis.max, stepOf(axis.min, axis.max, axis.width || axis.chart.width))
                         .map((value) => ({value}));
      },
      ticks: {callback: labelOf, maxRotation: 0, autoSkip: false},
    };
  }

  // ---- the chart

  function withUnit(value, unit) {
    return unit ? number.format(value) + " " + unit : number.format(value);
  }

  function configurationOf(canvas, told) {
    const points = told.points;
    return {
      type: "line",
      data: {
        datasets: [{
          label: told.label,
          data: points.map(([x, y]) => ({x, y})),
          borderWidth: 2,
          pointRadius: points.length <= DOTS_UP_TO ? 3 : 0,
          pointHitRadius: 12,
          spanGaps: false,
          stepped: canvas.dataset.chartStep !== undefined ? "before" : false,
          fill: "start",
          clip: 5,  // whole dots at the edges
        }],
      },
      options: {
        animation: false,
        maintainAspectRatio: false,
        parsing: false,
        normalized: true,
        interaction: {mode: "nearest", axis: "x", intersect: false},
        scales: {
          x: timeScale(points),
          y: {
            ticks: {callback: (value) => number.format(value)},
            title: {display: Boolean(told.unit), text: told.unit},
          },
        },
        plugins: {
          legend: {display: false},
          tooltip: {
            displayColors: false,
            callbacks: {
              title: (items) => full(items[0].parsed.x),
              label: (item) => withUnit(item.parsed.y, told.unit),
            },
          },
        },
      },
    };
  }

  // The style sheet has the colours.
  function colour(chart) {
    const style = getComputedStyle(document.documentElement);
    const of = (name) => style.getPropertyValue(name).trim();
    const dataset = chart.data.datasets[0];
    dataset.borderColor = of("--chart");
    dataset.pointBackgroundColor = of("--chart");
    dataset.backgroundColor = of("--chart-back");
    for (const scale of Object.values(chart.options.scales)) {
      scale.ticks.color = of("--muted");
      scale.grid = {color: of("--line"), borderColor: of("--field-line")};
    }
    chart.options.scales.y.title.color = of("--muted");
    chart.update("none");
  }

  // ---- in words

  function summaryOf(told) {
    const values = told.points.filter(([, value]) => value !== null);
    if (values.length === 0) return "There are no values in this time.";
    let low = values[0];
    let high = values[0];
    for (const each of values) {
      if (each[1] < low[1]) low = each;
      if (each[1] > high[1]) high = each;
    }
    const last = values[values.length - 1];
    const tell = ([at, value]) => withUnit(value, told.unit) + " (" + full(at) + ")";
    return (values.length === 1 ? "1 value" : values.length + " values") + ": lowest " + tell(low) + ", highest " +
           tell(high) + ", last " + tell(last) + ".";
  }

  function tell(view, text, failed) {
    view.canvas.setAttribute("role", "img");
    view.canvas.setAttribute("aria-label", text);
    view.canvas.parentNode.hidden = failed;
    if (!view.summary) return;
    view.summary.textContent = text;
    view.summary.classList.toggle("error", failed);
  }

  // ---- getting the values

  async function fetchValues(address, signal) {
    const answer = await fetch(address, {headers: {Accept: "application/json"}, signal});
    if (!answer.ok) throw new Error("the gateway answered " + answer.status);
    if (!(answer.headers.get("Content-Type") || "").startsWith("application/json"))
      throw new Error("the gateway answered with something else; is the session over?");
    const told = await answer.json();
    if (!Array.isArray(told.points)) throw new Error("the gateway answered without points");
    return {label: String(told.label || ""), unit: String(told.unit || ""), points: told.points};
  }

  async function load(view) {
    if (view.loading) view.loading.abort();
    const loading = view.loading = new AbortController();
    try {
      if (typeof Chart === "undefined") throw new Error("Chart.js is missing");
      const told = await fetchValues(view.canvas.dataset.chart, loading.signal);
      if (view.chart) view.chart.destroy();
      view.chart = null;
      const summary = summaryOf(told);
      tell(view, told.label ? told.label + ": " + summary : summary, false);
      view.canvas.parentNode.hidden = told.points.length === 0;
      if (told.points.length === 0) return;
      view.chart = new Chart(view.canvas, configurationOf(view.canvas, told));
      colour(view.chart);
    } catch (error) {
      if (error.name !== "AbortError") tell(view, "The chart cannot be shown: " + error.message + ".", true);
    }
  }

  // The fields of a form as parameters of an address; those without a value are taken out.
  function withFields(address, form) {
    const url = new URL(address, location.href);
    for (const [name, value] of new FormData(form))
      if (value === "")
        url.searchParams.delete(name);
      else
        url.searchParams.set(name, value);
    return url.pathname + url.search;
  }

  function follow(form, views) {
    const view = views.find((each) => each.canvas.id === form.dataset.chartForm);
    if (!view) return;
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      view.canvas.dataset.chart = withFields(view.canvas.dataset.chart, form);
      history.replaceState(null, "", withFields(location.href, form));
      load(view);
    });
  }

  const views = [...document.querySelectorAll("canvas[data-chart]")].map((canvas) => ({
    canvas, summary: document.getElementById(canvas.dataset.chartSummary), chart: null, loading: null,
  }));
  for (const form of document.querySelectorAll("form.range[data-chart-form]")) follow(form, views);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    for (const view of views) if (view.chart) colour(view.chart);
  });
  for (const view of views) load(view);
})();
