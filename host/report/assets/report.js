// The two charts of residuals: over time and over elevation. Axes and the selection of a range come
// from uPlot; the points are drawn here, as there are up to some hundred thousand of them in series
// that share no epochs. Everything that the charts tell by pointing they also tell by keyboard.
(function () {
    "use strict";
    const place = document.getElementById("charts");
    if (!place) {
        return;
    }
    const data = JSON.parse(document.getElementById("chart-data").textContent);

    // ---- data ----------------------------------------------------------------------------------

    const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    const kDigits = new Uint8Array(128);
    for (let i = 0; i < kAlphabet.length; ++i) {
        kDigits[kAlphabet.charCodeAt(i)] = i;
    }

    // Integers of five bits a character; see compact.h.
    function integers(text) {
        const list = [];
        let value = 0, factor = 1;
        for (let i = 0; i < text.length; ++i) {
            const digit = kDigits[text.charCodeAt(i)];
            value += (digit & 31) * factor;
            if (digit & 32) {
                factor *= 32;
                continue;
            }
            list.push(value % 2 ? -(value - 1) / 2 : value / 2);
            value = 0;
            factor = 1;
        }
        return list;
    }

    function timesOf(start, text) {
        const times = [start], pairs = integers(text);
        for (let i = 0; i < pairs.length; i += 2) {
            for (let k = 0; k < pairs[i + 1]; ++k) {
                times.push(times[times.length - 1] + pairs[i]);
            }
        }
        return times;
    }

    function epochsOf(text) {
        const epochs = [], pairs = integers(text);
        let next = 0;
        for (let i = 0; i < pairs.length; i += 2) {
            next += pairs[i];
            for (let k = 0; k < pairs[i + 1]; ++k) {
                epochs.push(next++);
            }
        }
        return epochs;
    }

    function running(list) {
        let sum = 0;
        return list.map(function (step) { return (sum += step); });
    }

    // Elevation in degrees at ascending epochs, between the nodes of the satellite's path.
    function elevationsAt(epochs, sky) {
        if (!sky) {
            return epochs.map(function () { return NaN; });
        }
        const nodes = running(integers(sky[0])), tenths = running(integers(sky[1]));
        let k = 0;
        return epochs.map(function (epoch) {
            while (k + 1 < nodes.length && nodes[k + 1] <= epoch) {
                ++k;
            }
            if (k + 1 === nodes.length || epoch <= nodes[k]) {
                return tenths[k] / 10;
            }
            const part = (epoch - nodes[k]) / (nodes[k + 1] - nodes[k]);
            return (tenths[k] + part * (tenths[k + 1] - tenths[k])) / 10;
        });
    }

    const times = timesOf(data.start, data.times);
    const kSystems = { G: "GPS", R: "GLONASS", C: "BeiDou", E: "Galileo" };
    const kColours = { G: [209, 85, 34], R: [19, 90, 36], C: [169, 100, 22], E: [285, 55, 37] };
    const twoBlocks = data.residuals.some(function (entry) { return entry[1] === 1; });

    // { name, satellite, system, block, time[], elevation[], value[], colour }
    const series = data.residuals.map(function (entry) {
        const epochs = epochsOf(entry[2]).map(function (epoch) { return epoch * data.thinning; });
        const system = entry[0][0], colour = kColours[system];
        const shade = (Number(entry[0].slice(1)) * 7) % 5 - 2;
        return {
            name: entry[0] + (twoBlocks ? (entry[1] ? " second" : " first") : ""),
            satellite: entry[0],
            system: system,
            block: entry[1],
            time: epochs.map(function (epoch) { return times[epoch]; }),
            elevation: elevationsAt(epochs, data.sky[entry[0]]),
            value: integers(entry[3]),
            colour: "hsl(" + (colour[0] + 5 * shade) + "," + colour[1] + "%," +
                (colour[2] + 4 * shade) + "%)"
        };
    });
    const total = series.reduce(function (sum, s) { return sum + s.value.length; }, 0);
    const largest = series.reduce(function (most, s) {
        return s.value.reduce(function (m, v) { return Math.max(m, Math.abs(v)); }, most);
    }, 10);
    const hasElevations = series.some(function (s) { return s.elevation.some(isFinite); });

    // ---- what is shown -------------------------------------------------------------------------

    // A word of: "all", a system's letter, a satellite; and the block, "0", "1" or "both".
    const shown = { what: "all", block: twoBlocks ? "0" : "both" };

    function isShown(s) {
        return (shown.block === "both" || String(s.block) === shown.block) &&
            (shown.what === "all" || shown.what === s.system || shown.what === s.satellite);
    }

    // ---- texts ---------------------------------------------------------------------------------

    function pad(number) {
        return (number < 10 ? "0" : "") + number;
    }
    // GPS time; the numbers are seconds since 1970 as if GPS time were UTC.
    function clock(seconds, withSeconds) {
        const date = new Date(seconds * 1000);
        return pad(date.getUTCHours()) + ":" + pad(date.getUTCMinutes()) +
            (withSeconds ? ":" + pad(date.getUTCSeconds()) : "");
    }
    function day(seconds) {
        return new Date(seconds * 1000).toISOString().slice(0, 10);
    }
    const oneDay = day(times[0]) === day(times[times.length - 1]);
    function signed(value) {
        return (value < 0 ? "\u2212" : "+") + Math.abs(value);
    }
    function told(s, i) {
        const elevation = s.elevation[i];
        return s.name + ", " + (oneDay ? "" : day(s.time[i]) + " ") + clock(s.time[i], true) +
            (isFinite(elevation) ? ", elevation " + elevation.toFixed(1) + "\u00b0" : "") + ", " +
            (s.value[i] === 0 ? "0" : signed(s.value[i])) + " mm";
    }

    // ---- drawing -------------------------------------------------------------------------------

    function element(name, attributes, parent, text) {
        const node = document.createElement(name);
        Object.keys(attributes || {}).forEach(function (key) {
            node.setAttribute(key, attributes[key]);
        });
        if (text !== undefined) {
            node.textContent = text;
        }
        if (parent) {
            parent.appendChild(node);
        }
        return node;
    }

    // Systems by shape: circle, triangle, square, diamond.
    const kShapes = {
        G: function (path, x, y, r) { path.moveTo(x + r, y); path.arc(x, y, r, 0, 6.2832); },
        R: function (path, x, y, r) {
            path.moveTo(x, y - 1.25 * r); path.lineTo(x + 1.2 * r, y + r); path.lineTo(x - 1.2 * r, y + r);
            path.closePath();
        },
        C: function (path, x, y, r) { path.rect(x - r, y - r, 2 * r, 2 * r); },
        E: function (path, x, y, r) {
            path.moveTo(x, y - 1.4 * r); path.lineTo(x + 1.4 * r, y); path.lineTo(x, y + 1.4 * r);
            path.lineTo(x - 1.4 * r, y); path.closePath();
        }
    };

    function pixels(u) {
        const x = u.scales.x, y = u.scales.y, box = u.bbox;
        const perX = box.width / (x.max - x.min), perY = box.height / (y.max - y.min);
        return {
            x: function (value) { return box.left + (value - x.min) * perX; },
            y: function (value) { return box.top + box.height - (value - y.min) * perY; }
        };
    }

    function drawSeries(u, chart, s, strong) {
        const ctx = u.ctx, at = pixels(u), xs = s[chart.field], ratio = devicePixelRatio || 1;
        const low = u.scales.x.min, high = u.scales.x.max;
        const single = shown.what === s.satellite;
        const radius = (single ? 2.6 : total > 30000 ? 1.2 : 1.9) * ratio;
        ctx.fillStyle = strong ? s.colour : "#d9dee4";
        if (single && chart.field === "time") {
            ctx.strokeStyle = s.colour;
            ctx.lineWidth = ratio;
            ctx.beginPath();
            for (let i = 0; i < xs.length; ++i) {
                const gap = i === 0 || xs[i] - xs[i - 1] > 4 * typicalStep * data.thinning;
                ctx[gap ? "moveTo" : "lineTo"](at.x(xs[i]), at.y(s.value[i]));
            }
            ctx.stroke();
        }
        ctx.beginPath();
        const shape = kShapes[s.system];
        for (let i = 0; i < xs.length; ++i) {
            if (xs[i] >= low && xs[i] <= high) {
                shape(ctx, at.x(xs[i]), at.y(s.value[i]), radius);
            }
        }
        ctx.fill();
    }

    const typicalStep = times.length > 1 ? (times[times.length - 1] - times[0]) / (times.length - 1) : 1;

    // Plus and minus the RMS of what is shown, in steps of five degrees.
    function drawSpread(u) {
        const kBin = 5, sums = [], counts = [];
        series.filter(isShown).forEach(function (s) {
            for (let i = 0; i < s.value.length; ++i) {
                if (isFinite(s.elevation[i])) {
                    const bin = Math.max(0, Math.floor(s.elevation[i] / kBin));
                    sums[bin] = (sums[bin] || 0) + s.value[i] * s.value[i];
                    counts[bin] = (counts[bin] || 0) + 1;
                }
            }
        });
        const ctx = u.ctx, at = pixels(u);
        ctx.strokeStyle = "#000";
        ctx.lineWidth = 1.8 * (devicePixelRatio || 1);
        ctx.beginPath();
        for (let bin = 0; bin < counts.length; ++bin) {
            const kFew = 5;
            if (counts[bin] >= kFew) {
                const rms = Math.sqrt(sums[bin] / counts[bin]);
                [-rms, rms].forEach(function (value) {
                    ctx.moveTo(at.x(bin * kBin), at.y(value));
                    ctx.lineTo(at.x((bin + 1) * kBin), at.y(value));
                });
            }
        }
        ctx.stroke();
    }

    function drawPeriods(u) {
        const ctx = u.ctx, at = pixels(u);
        ctx.strokeStyle = "#17202b";
        ctx.lineWidth = devicePixelRatio || 1;
        ctx.setLineDash([5, 4]);
        ctx.beginPath();
        data.periods.slice(1).forEach(function (epoch) {
            const x = at.x((times[epoch - 1] + times[epoch]) / 2);
            ctx.moveTo(x, u.bbox.top);
            ctx.lineTo(x, u.bbox.top + u.bbox.height);
        });
        ctx.stroke();
        ctx.setLineDash([]);
    }

    function draw(u, chart) {
        const ctx = u.ctx, box = u.bbox;
        ctx.save();
        ctx.beginPath();
        ctx.rect(box.left, box.top, box.width, box.height);
        ctx.clip();
        series.forEach(function (s) {
            if (!isShown(s) && shown.block !== "both" && String(s.block) !== shown.block) {
                return;
            }
            if (!isShown(s)) {
                drawSeries(u, chart, s, false);
            }
        });
        series.forEach(function (s) {
            if (isShown(s)) {
                drawSeries(u, chart, s, true);
            }
        });
        chart.field === "time" ? drawPeriods(u) : drawSpread(u);
        ctx.restore();
    }

    // ---- one chart -----------------------------------------------------------------------------

    const charts = [];

    function nearest(u, chart, left, top) {
        const kReach = 28;
        let best = null, least = kReach * kReach;
        series.forEach(function (s) {
            if (!isShown(s)) {
                return;
            }
            const xs = s[chart.field];
            for (let i = 0; i < xs.length; ++i) {
                const dx = u.valToPos(xs[i], "x") - left;
                if (dx > kReach || dx < -kReach) {
                    continue;
                }
                const dy = u.valToPos(s.value[i], "y") - top, d = dx * dx + dy * dy;
                if (d < least) {
                    least = d;
                    best = { series: s, index: i };
                }
            }
        });
        return best;
    }

    // Marks a point and tells its values; null: none.
    function point(chart, hit) {
        const u = chart.plot;
        chart.hit = hit;
        const visible = hit !== null;
        chart.dot.hidden = !visible;
        chart.tip.hidden = !visible;
        chart.output.textContent = visible ? told(hit.series, hit.index) : chart.hint;
        if (!visible) {
            return;
        }
        const x = u.valToPos(hit.series[chart.field][hit.index], "x");
        const y = u.valToPos(hit.series.value[hit.index], "y");
        chart.dot.style.left = x + "px";
        chart.dot.style.top = y + "px";
        chart.tip.textContent = told(hit.series, hit.index);
        const width = chart.tip.offsetWidth, room = u.over.clientWidth;
        chart.tip.style.left = Math.max(0, Math.min(x + 12, room - width)) + "px";
        chart.tip.style.top = (y > 45 ? y - 38 : y + 14) + "px";
    }

    function setRange(chart, low, high) {
        const whole = chart.range, kLeast = (whole[1] - whole[0]) / 2000;
        const length = Math.min(Math.max(high - low, kLeast), whole[1] - whole[0]);
        const from = Math.min(Math.max(low, whole[0]), whole[1] - length);
        chart.plot.setScale("x", { min: from, max: from + length });
    }

    function reset(chart) {
        chart.plot.batch(function () {
            chart.plot.setScale("x", { min: chart.range[0], max: chart.range[1] });
            chart.plot.setScale("y", { min: -1.08 * largest, max: 1.08 * largest });
        });
    }

    function zoom(chart, factor) {
        const x = chart.plot.scales.x;
        const inView = chart.hit && chart.hit.series[chart.field][chart.hit.index];
        const centre = inView >= x.min && inView <= x.max ? inView : (x.min + x.max) / 2;
        setRange(chart, centre - (centre - x.min) * factor, centre + (x.max - centre) * factor);
    }

    function pan(chart, part) {
        const x = chart.plot.scales.x, shift = part * (x.max - x.min);
        setRange(chart, x.min + shift, x.max + shift);
    }

    // To the next point of the series, or to another series near the same place.
    function step(chart, along, across) {
        const list = series.filter(isShown);
        if (list.length === 0) {
            return;
        }
        let hit = chart.hit && list.indexOf(chart.hit.series) >= 0 ? chart.hit : null;
        if (!hit) {
            hit = { series: list[0], index: 0 };
        } else if (across !== 0) {
            const next = list[(list.indexOf(hit.series) + across + list.length) % list.length];
            const x = hit.series[chart.field][hit.index];
            let index = 0;
            next[chart.field].forEach(function (value, i) {
                if (Math.abs(value - x) < Math.abs(next[chart.field][index] - x)) {
                    index = i;
                }
            });
            hit = { series: next, index: index };
        } else {
            const last = hit.series.value.length - 1;
            hit = { series: hit.series, index: Math.min(Math.max(hit.index + along, 0), last) };
        }
        const at = hit.series[chart.field][hit.index], x = chart.plot.scales.x;
        if (at < x.min || at > x.max) {
            const half = (x.max - x.min) / 2;
            setRange(chart, at - half, at + half);
        }
        point(chart, hit);
        chart.hitByKey = true;
    }

    function onKey(chart, event) {
        const actions = {
            ArrowRight: function () { event.shiftKey ? pan(chart, 0.25) : step(chart, 1, 0); },
            ArrowLeft: function () { event.shiftKey ? pan(chart, -0.25) : step(chart, -1, 0); },
            ArrowDown: function () { step(chart, 0, 1); },
            ArrowUp: function () { step(chart, 0, -1); },
            "+": function () { zoom(chart, 0.5); },
            "=": function () { zoom(chart, 0.5); },
            "-": function () { zoom(chart, 2); },
            "0": function () { reset(chart); },
            Home: function () { reset(chart); },
            Escape: function () { point(chart, null); }
        };
        if (actions[event.key] && !event.ctrlKey && !event.metaKey && !event.altKey) {
            actions[event.key]();
            event.preventDefault();
        }
    }

    const kHeight = 340, kAxisFont = "12px system-ui, sans-serif";

    function options(chart, width) {
        const isTime = chart.field === "time";
        const axis = { font: kAxisFont, labelFont: "600 " + kAxisFont, stroke: "#4c5866",
            grid: { stroke: "#e3e8ed", width: 1 }, ticks: { stroke: "#b9c2cc", width: 1, size: 5 } };
        const xAxis = Object.assign({}, axis, {
            label: isTime ? "GPS time" + (oneDay ? ", " + day(times[0]) : "") : "Elevation (\u00b0)",
            size: isTime && !oneDay ? 46 : 32, gap: 3, labelGap: 0, labelSize: 22, space: isTime ? (oneDay ? 62 : 78) : 45 });
        if (isTime) {
            xAxis.values = function (u, splits, index, space, increment) {
                return splits.map(function (value, i) {
                    const fresh = !oneDay && (i === 0 || day(value) !== day(splits[i - 1]));
                    return clock(value, increment < 60) + (fresh ? "\n" + day(value) : "");
                });
            };
        }
        return {
            width: width,
            height: kHeight,
            pxAlign: false,
            tzDate: function (seconds) { return uPlot.tzDate(new Date(seconds * 1000), "Etc/UTC"); },
            legend: { show: false },
            cursor: {
                points: { show: false },
                drag: { x: true, y: true, uni: 25, dist: 5 },
                bind: { dblclick: function () { return function () { reset(chart); return null; }; } }
            },
            scales: {
                x: { time: isTime, auto: false, range: function (u, low, high) { return [low, high]; } },
                y: { auto: false, range: function (u, low, high) { return [low, high]; } }
            },
            axes: [xAxis, Object.assign({}, axis, { label: "Residual (mm)", labelSize: 20, size: 52,
                values: function (u, splits) {
                    return splits.map(function (v) { return String(v).replace("-", "\u2212"); });
                } })],
            series: [{}, { show: true, paths: function () { return null; }, points: { show: false } }],
            hooks: {
                draw: [function (u) { draw(u, chart); }],
                setCursor: [function (u) {
                    if (u.cursor.left >= 0 && u.cursor.event) {
                        chart.hitByKey = false;
                        point(chart, nearest(u, chart, u.cursor.left, u.cursor.top));
                    } else if (!chart.hitByKey) {
                        point(chart, null);
                    }
                }],
                setScale: [function () {
                    if (chart.plot) {
                        point(chart, chart.hit);
                        inRange(chart);
                    }
                }]
            }
        };
    }

    // A marked point that zooming has moved out of sight is no longer marked.
    function inRange(chart) {
        if (chart.hit) {
            const at = chart.hit.series[chart.field][chart.hit.index], x = chart.plot.scales.x;
            if (at < x.min || at > x.max) {
                point(chart, null);
            }
        }
    }

    function addChart(field, title, range) {
        const chart = { field: field, range: range, hit: null, hitByKey: false,
            hint: "Point at the chart, or use the arrow keys, to read values." };
        const box = element("figure", { "class": "chart" }, place);
        element("h3", { id: "chart-" + field }, box, title);
        const plot = element("div", { "class": "plot", tabindex: "0", role: "application",
            "aria-labelledby": "chart-" + field, "aria-describedby": "chart-keys" }, box);
        chart.plot = new uPlot(options(chart, plot.clientWidth || 700), [range, [null, null]], plot);
        plot.querySelector("canvas").setAttribute("aria-hidden", "true");
        chart.dot = element("div", { "class": "dot", hidden: "hidden" }, chart.plot.over);
        chart.tip = element("div", { "class": "tip", hidden: "hidden" }, chart.plot.over);
        chart.output = element("output", { "aria-live": "polite" }, box);
        chart.output.textContent = chart.hint;
        const buttons = element("div", { "class": "buttons", role: "group", "aria-label": title }, box);
        [["Zoom in", function () { zoom(chart, 0.5); }], ["Zoom out", function () { zoom(chart, 2); }],
            ["\u25c0 Back", function () { pan(chart, -0.25); }],
            ["Forth \u25b6", function () { pan(chart, 0.25); }],
            ["Whole range", function () { reset(chart); }]].forEach(function (entry) {
            element("button", { type: "button" }, buttons, entry[0]).addEventListener("click", entry[1]);
        });
        plot.addEventListener("keydown", function (event) { onKey(chart, event); });
        chart.box = plot;
        charts.push(chart);
        reset(chart);
    }

    function resize(width, height) {
        charts.forEach(function (chart) {
            const wanted = width || chart.box.clientWidth;
            if (wanted > 0 && (wanted !== chart.plot.width || height !== chart.plot.height)) {
                chart.plot.setSize({ width: wanted, height: height });
                point(chart, null);
            }
        });
    }

    // ---- page ----------------------------------------------------------------------------------

    function addChoice(parent, name, choices, chosen) {
        const box = element("div", {}, parent);
        element("label", { "for": "show-" + name }, box, name);
        const select = element("select", { id: "show-" + name }, box);
        choices.forEach(function (choice) {
            element("option", { value: choice[0] }, select, choice[1]);
        });
        select.addEventListener("change", function () {
            chosen(select.value);
            charts.forEach(function (chart) {
                point(chart, null);
                chart.plot.redraw();
            });
        });
    }

    function addLegend(parent) {
        const list = element("ul", { "class": "legend" }, parent);
        Object.keys(kSystems).forEach(function (letter) {
            if (series.some(function (s) { return s.system === letter; })) {
                const shape = { G: "M9 6a4 4 0 1 0 8 0a4 4 0 1 0-8 0z", R: "M13 1l5 9h-10z",
                    C: "M9 2h8v8h-8z", E: "M13 1l5 5l-5 5l-5-5z" }[letter];
                const item = element("li", {}, list);
                item.innerHTML = '<svg viewBox="0 0 26 12" aria-hidden="true"><path class="s' + letter +
                    '" fill="var(--c)" d="' + shape + '"/></svg> ' + kSystems[letter];
            }
        });
        if (hasElevations) {
            element("li", {}, list).innerHTML = '<svg viewBox="0 0 26 12" aria-hidden="true"><path ' +
                'd="M1 3H25M1 9H25" stroke="#000" stroke-width="2"/></svg> \u00b1 RMS of 5\u00b0 of elevation';
        }
    }

    place.hidden = false;
    const controls = element("div", { "class": "controls" }, place);
    const systems = Object.keys(kSystems).filter(function (letter) {
        return series.some(function (s) { return s.system === letter; });
    });
    const satellites = series.map(function (s) { return s.satellite; }).filter(function (name, i, all) {
        return all.indexOf(name) === i;
    });
    addChoice(controls, "Satellites", [["all", "All"]].concat(
        systems.map(function (letter) { return [letter, kSystems[letter]]; }),
        satellites.map(function (name) { return [name, name]; })),
    function (value) { shown.what = value; });
    if (twoBlocks) {
        addChoice(controls, "Frequency", [["0", "First"], ["1", "Second"], ["both", "Both"]],
            function (value) { shown.block = value; });
    }
    addLegend(place);
    element("p", { "class": "note keys", id: "chart-keys" }, place,
        "Drag over a part to enlarge it, double-click for the whole. Keys in a chart: left and right " +
        "go from point to point, up and down from satellite to satellite, + and \u2212 zoom, Shift " +
        "with left or right moves, 0 shows the whole.");
    const margin = Math.max(1, (times[times.length - 1] - times[0]) * 0.01);
    addChart("time", "Residuals over time", [times[0] - margin, times[times.length - 1] + margin]);
    if (hasElevations) {
        addChart("elevation", "Residuals over elevation", [0, 90]);
    } else {
        element("p", { "class": "note" }, place,
            "Elevations are not known without broadcast orbits, so there is no chart over elevation.");
    }
    new ResizeObserver(function () { resize(0, kHeight); }).observe(place);
    const kPaper = { width: 680, height: 270 };  // CSS pixels; between the margins of A4
    window.addEventListener("beforeprint", function () { resize(kPaper.width, kPaper.height); });
    window.addEventListener("afterprint", function () { resize(0, kHeight); });
    window.vornelCharts = charts;  // for a look from the browser's console
}());
