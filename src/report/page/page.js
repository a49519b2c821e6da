// Shows the report that the page holds as JSON. Codes, names and paths come from strangers: they are only ever
// shown as text, never as markup.
(() => {
"use strict";

const byId = (id) => document.getElementById(id);
const report = JSON.parse(byId("report").textContent);
const maps = JSON.parse(byId("maps").textContent);

const survey = report.task === "survey";
const done = report.task === "cleaning" && report.outcome === "complete";
const words = done ? { go: "went", stay: "stayed" } : { go: "would go", stay: "would stay" };
const capital = (text) => text[0].toUpperCase() + text.slice(1);

// Making elements and texts

const format = new Intl.NumberFormat("en").format;
const share = (part, all) => {
    const percent = all === 0 ? 0 : 100 * part / all;
    return percent > 0 && percent < 0.1 ? "< 0.1 %" : `${percent.toFixed(1)} %`;
};
const count = (number, noun) => `${format(number)} ${noun}${number === 1 ? "" : "s"}`;

function make(tag, properties, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(properties || {})) {
        if (name in element) element[name] = value;
        else element.setAttribute(name, value);
    }
    element.append(...children);
    return element;
}

// A text of a stranger, kept apart from the text around it, whichever way it is written.
const foreign = (text, ifEmpty) => text === "" ? make("em", {}, ifEmpty) : make("bdi", {}, text);

// `headings` are texts, `rows` arrays of texts, numbers and elements.
function makeTable(headings, rows) {
    const cell = (value) => typeof value === "number" ? make("td", { className: "number" }, format(value))
        : make("td", {}, value);
    const isNumber = (column) => rows.length > 0 && typeof rows[0][column] === "number";
    const head = headings.map((text, column) =>
        make("th", { scope: "col", className: isNumber(column) ? "number" : "" }, text));
    return make("table", {}, make("thead", {}, make("tr", {}, ...head)),
        make("tbody", {}, ...rows.map((row) => make("tr", {}, ...row.map(cell)))));
}
const tallyHeadings = survey ? ["Blocks"] : ["Blocks", capital(words.go), capital(words.stay)];
const tallyCells = (tally) => survey ? [tally.blocks] : [tally.blocks, tally.removed, tally.kept];

// The top of the page

function showTop() {
    const titles = { "survey": "Survey of ", "dry run": "Dry run of ", "cleaning": "Cleaning of " };
    const file = report.input === "-" ? "standard input" : (report.input || "").replace(/^.*[/\\]/, "") || "a world";
    byId("title").replaceChildren(titles[report.task], make("bdi", {}, file));
    document.title = `${titles[report.task]}${file} – Quillmere`;
    const time = new Date(report.started);
    const shownTime = time.toLocaleString("en-GB", { day: "numeric", month: "long", year: "numeric",
        hour: "2-digit", minute: "2-digit", timeZoneName: "short" });
    byId("read").append("Read ", make("time", { dateTime: report.started }, shownTime),
        `, in ${report.seconds < 0.1 ? "less than 0.1" : report.seconds.toFixed(1)} seconds. `,
        `Lines end with ${report.lineEnds}; the last line is ${report.endsWithEof ? "" : "not "}[EOF].`);
    byId("typed").textContent = ["quillmere-batch", ...report.arguments.map(asTyped)].join(" ");
    byId("program").textContent = `Quillmere ${report.program.version}`;
    if (report.outcome === "complete") return;
    byId("outcome").append(make("strong", {}, { failed: "The run failed.", refused: "The run was refused.",
        halted: "The run was halted." }[report.outcome]), " ", foreign(report.error || "", ""));
    byId("outcome").hidden = false;
}

// In quotes where a shell needs them.
function asTyped(argument) {
    if (/^[\w@%+=:,./\\-]+$/.test(argument)) return argument;
    return /["$`!]/.test(argument) ? `'${argument.replace(/'/g, "'\\''")}'` : `"${argument}"`;
}

function showSums() {
    const { blocks, removed, kept } = report.all;
    const number = (value, label, className) => make("div", { className: `sum ${className}` },
        make("strong", {}, format(value)), make("span", {}, label));
    const sums = make("div", { className: "sums" }, number(blocks, blocks === 1 ? "block" : "blocks", ""));
    byId("sums").append(sums);
    if (survey) {
        sums.append(number(report.codes.length, report.codes.length === 1 ? "code" : "codes", ""),
            number(blocks - report.unplaced.blocks, "with a position", ""));
        return;
    }
    sums.append(number(removed, `${words.go}, ${share(removed, blocks)}`, "go"),
        number(kept, `${words.stay}, ${share(kept, blocks)}`, "stay"));
    const bar = make("div", { className: "bar", role: "img",
        "aria-label": `${share(removed, blocks)} ${words.go}, ${share(kept, blocks)} ${words.stay}` });
    for (const [part, className] of [[removed, "go"], [kept, "stay"]]) {
        const piece = make("span", { className });
        piece.style.flexGrow = part;
        if (part > 0) bar.append(piece);
    }
    if (blocks > 0) byId("sums").append(bar);
}

// The table of codes

const rowsAtFirst = 200;
const rowsAtOnce = 5000;  // ten times as many would stop a browser for seconds

function showCodes() {
    const names = { code: "Code", blocks: survey ? "Blocks" : "In the world", removed: capital(words.go),
        kept: capital(words.stay), share: "Share" };
    const keys = Object.keys(names).filter((key) => !survey || (key !== "removed" && key !== "kept"));
    const columns = keys.map((key) => ({ key, heading: names[key] }));
    const rows = report.codes.map((row) => ({ ...row, share: row.blocks, element: null }));
    const most = rows[0].blocks;
    const compare = new Intl.Collator("en").compare;
    const state = { key: "blocks", descending: true, rows: rowsAtFirst };

    const body = make("tbody");
    const headings = columns.map((column) => {
        const button = make("button", { type: "button" }, column.heading);
        column.cell = make("th", { scope: "col", className: column.key === "code" ? "" : "number" }, button);
        button.addEventListener("click", () => {
            state.descending = state.key === column.key ? !state.descending : column.key !== "code";
            state.key = column.key;
            show();
        });
        return column.cell;
    });
    byId("codes").append(make("thead", {}, make("tr", {}, ...headings)), body);

    function element(row) {
        if (row.element) return row.element;
        const meter = make("span", { className: "meter", "aria-hidden": "true" });
        for (const [part, className] of [[row.removed, "go"], [row.kept, "stay"]]) {
            const piece = make("span", { className });
            piece.style.width = `${100 * part / most}%`;
            if (part > 0) meter.append(piece);
        }
        const numbers = tallyCells(row).map((value) => make("td", { className: "number" }, format(value)));
        row.element = make("tr", {}, make("th", { scope: "row" }, foreign(row.code, "no code")), ...numbers,
            make("td", { className: "number" }, share(row.blocks, report.all.blocks), meter));
        return row.element;
    }

    function show() {
        const wanted = byId("search").value.toLowerCase();
        const found = rows.filter((row) => row.code.toLowerCase().includes(wanted));
        const sign = state.descending ? -1 : 1;
        found.sort((one, other) => sign * (state.key === "code" ? compare(one.code, other.code)
            : one[state.key] - other[state.key]));
        const visible = found.slice(0, state.rows);
        body.replaceChildren(...visible.map(element));
        for (const column of columns) {
            if (column.key !== state.key) column.cell.removeAttribute("aria-sort");
            else column.cell.setAttribute("aria-sort", state.descending ? "descending" : "ascending");
        }
        byId("shown").textContent = wanted === "" ? count(rows.length, "code")
            : `${format(found.length)} of ${count(rows.length, "code")}`;
        byId("show-all").hidden = visible.length === found.length;
        byId("show-all").textContent = found.length <= state.rows + rowsAtOnce ? `Show all ${format(found.length)}`
            : `Show ${format(rowsAtOnce)} more`;
    }
    byId("search").addEventListener("input", show);
    byId("show-all").addEventListener("click", () => {
        state.rows += rowsAtOnce;
        show();
    });
    show();
}

// The map

// A square that is shown, and one that is asked about, is at least this wide on the screen, in pixels.
const shownWidth = 2;
const askedWidth = 8;

function showMaps() {
    byId("map-panel").hidden = byId("tabs").hidden = maps.length === 0;
    byId("no-map").hidden = maps.length > 0;
    byId("filled").hidden = survey;
    if (maps.length === 0) return;

    // Plain coordinates, y downwards.
    const crs = L.extend({}, L.CRS.Simple, { transformation: new L.Transformation(1, 0, 1, 0) });
    const map = L.map("map", { crs, attributionControl: false, zoomSnap: 0, minZoom: -32, scrollWheelZoom: false,
        maxBoundsViscosity: 1, fadeAnimation: false });
    const area = (x1, y1, x2, y2) => L.latLngBounds([[y1, x1], [y2, x2]]);
    const layers = [{ key: "kept", name: survey ? "blocks" : `what ${words.stay}`, className: "stay" },
        ...survey ? [] : [{ key: "removed", name: `what ${words.go}`, className: "go" }]];
    const mark = L.rectangle(area(0, 0, 0, 0), { interactive: false, className: "mark" });
    let shown = null;  // the map of a facet, with its counts as arrays
    const pixels = (width) => width * map.getZoomScale(map.getZoom(), 0);

    for (const layer of layers) {
        layer.canvas = make("canvas");
        // An overlay of this kind takes any element.
        layer.overlay = L.svgOverlay(layer.canvas, area(0, 0, 1, 1), { interactive: false });
        layer.scale = make("small");
        addSwitch(layer.name, layer.overlay, make("span", { className: `scale ${layer.className}` }), layer.scale);
    }
    const rectangles = report.rectangles.filter((area) => area.x1 <= area.x2 && area.y1 <= area.y2);
    if (rectangles.length > 0) addRectangles();
    addTabs();
    addPointer();
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => paint(true));
    map.on("zoomend", () => paint(false));
    addEventListener("beforeprint", () => fitForPrint(true));
    addEventListener("afterprint", () => fitForPrint(false));

    function addSwitch(name, overlay, sign, ...notes) {
        const box = make("input", { type: "checkbox", checked: true });
        box.addEventListener("change", () => box.checked ? overlay.addTo(map) : overlay.remove());
        byId("layers").append(make("label", {}, box, " ", sign, ` ${capital(name)} `, ...notes));
        overlay.wanted = () => box.checked;
    }

    function addTabs() {
        const tabs = maps.map((facet, index) => {
            const tab = make("button", { type: "button", role: "tab", id: `tab-${index}`,
                "aria-controls": "map-panel" }, `Facet ${facet.facet}`);
            tab.addEventListener("click", () => select(index));
            return tab;
        });
        byId("tabs").append(...tabs);
        byId("tabs").addEventListener("keydown", (event) => {
            const now = tabs.indexOf(document.activeElement);
            const to = { ArrowLeft: now - 1, ArrowRight: now + 1, Home: 0, End: tabs.length - 1 }[event.key];
            if (to === undefined) return;
            event.preventDefault();
            const index = (to + tabs.length) % tabs.length;
            select(index);
            tabs[index].focus();
        });
        function select(index) {
            tabs.forEach((tab, other) => {
                tab.setAttribute("aria-selected", String(other === index));
                tab.tabIndex = other === index ? 0 : -1;
            });
            byId("map-panel").setAttribute("aria-labelledby", `tab-${index}`);
            showFacet(maps[index]);
        }
        const blocks = maps.map((map) => report.facets.find((facet) => facet.facet === map.facet).blocks);
        select(blocks.indexOf(Math.max(...blocks)));
    }

    function showFacet(facet) {
        shown = { ...facet, kept: counts(facet, facet.kept), removed: counts(facet, facet.removed), level: -1 };
        const { left, top, cell, columns, rows } = shown;
        const whole = area(left, top, left + columns * cell, top + rows * cell);
        byId("map").setAttribute("aria-label", `Map of facet ${facet.facet}`);
        byId("found").textContent = "Click on the map to see what lies there.";
        mark.remove();
        const closest = Math.log2(64 / cell);  // a larger picture would be too large for a browser
        map.setMaxBounds(null).setMinZoom(-32).setMaxZoom(Infinity);  // not those of the facet shown before
        map.fitBounds(whole, { padding: [8, 8], animate: false, maxZoom: closest });
        map.setMinZoom(map.getZoom() - 2).setMaxZoom(closest);
        map.setMaxBounds(whole.pad(1));
        paint(true);
        for (const layer of layers) if (layer.overlay.wanted()) layer.overlay.addTo(map);
    }

    // One number for each square, row by row.
    function counts(facet, runs) {
        const numbers = new Uint32Array(facet.columns * facet.rows);
        for (const [row, column, ...run] of runs) {
            let index = row * facet.columns + column;
            for (const number of run) {
                if (number < 0) index -= number;
                else numbers[index++] = number;
            }
        }
        return numbers;
    }

    // Draws the layers. When squares would be too narrow to be seen, 4, 16 or more of them become one.
    function paint(always) {
        const level = Math.max(0, Math.ceil(Math.log2(shownWidth / pixels(shown.cell))));
        if (level === shown.level && !always) return;
        shown.level = level;
        const width = ((shown.columns - 1) >> level) + 1;
        const height = ((shown.rows - 1) >> level) + 1;
        const side = shown.cell * 2 ** level;
        const bounds = area(shown.left, shown.top, shown.left + width * side, shown.top + height * side);
        const sums = { kept: coarser(shown.kept, width, height), removed: coarser(shown.removed, width, height) };
        for (const layer of layers) {
            const most = sums[layer.key].reduce((one, other) => Math.max(one, other), 0);
            draw(layer, sums, width, most);
            layer.overlay.setBounds(bounds);
            layer.scale.textContent = most === 0 ? "none"
                : `${most === 1 ? "" : "1 to "}${format(most)} in a square of ${format(side)} × ${format(side)}`;
        }
    }

    function coarser(numbers, width, height) {
        const sums = new Uint32Array(width * height);
        numbers.forEach((number, index) => {
            if (number === 0) return;
            const row = Math.floor(index / shown.columns) >> shown.level;
            sums[row * width + ((index % shown.columns) >> shown.level)] += number;
        });
        return sums;
    }

    // The colours tell the logarithm of the number of blocks. A square has two by two points: what goes takes as many
    // of them as its share is, the others show what stays.
    function draw(layer, sums, width, most) {
        const [low, high] = ["low", "high"].map((end) => {
            const colour = getComputedStyle(document.documentElement).getPropertyValue(`--${layer.className}-${end}`);
            return [1, 3, 5].map((start) => parseInt(colour.trim().slice(start, start + 2), 16));
        });
        const image = new ImageData(2 * width, 2 * sums.kept.length / width);
        const points = [0, 2 * width + 1, 1, 2 * width];
        sums[layer.key].forEach((number, index) => {
            if (number === 0) return;
            const part = most === 1 ? 1 : Math.log(number) / Math.log(most);
            const colour = low.map((from, channel) => from + part * (high[channel] - from));
            const kept = sums.kept[index];
            const filled = layer.key === "kept" || kept === 0 ? 4 : Math.ceil(3 * number / (number + kept));
            const first = 4 * width * Math.floor(index / width) + 2 * (index % width);
            for (const point of points.slice(0, filled)) image.data.set([...colour, 255], 4 * (first + point));
        });
        Object.assign(layer.canvas, { width: image.width, height: image.height });
        layer.canvas.getContext("2d").putImageData(image, 0, 0);
    }

    function addRectangles() {
        const group = L.layerGroup().addTo(map);
        const labels = L.layerGroup().addTo(group);
        for (const rectangle of rectangles) {
            rectangle.area = area(rectangle.x1, rectangle.y1, rectangle.x2 + 1, rectangle.y2 + 1);
            L.rectangle(rectangle.area, { className: "rectangle", weight: 1 })
                .bindTooltip(() => foreign(rectangle.name, ""), { sticky: true }).addTo(group);
        }
        // Names stand in those rectangles that are large enough; the others show theirs at the pointer.
        map.on("moveend", () => {
            labels.clearLayers();
            const room = ({ x1, x2, y1, y2, name }) => Math.min(pixels(x2 - x1 + 1) / (8 * name.length + 8),
                pixels(y2 - y1 + 1) / 20);
            rectangles.filter((one) => room(one) >= 1 && map.getBounds().contains(one.area.getCenter()))
                .sort((one, other) => room(other) - room(one)).slice(0, 50).forEach((one) =>
                    L.tooltip({ permanent: true, direction: "center", className: "name" })
                        .setLatLng(one.area.getCenter()).setContent(foreign(one.name, "")).addTo(labels));
        });
        addSwitch(count(rectangles.length, "rectangle"), group, make("span", { className: "scale rectangles" }));
    }

    function addPointer() {
        const element = map.getContainer();
        const showPosition = ({ lat, lng }) => {
            byId("position").textContent = `x ${Math.floor(lng)}, y ${Math.floor(lat)}`;
        };
        map.on("mousemove", (event) => showPosition(event.latlng));
        map.on("click", (event) => tell(event.latlng));
        // The wheel scrolls the page until the map has been clicked.
        map.on("focus", () => map.scrollWheelZoom.enable());
        map.on("blur", () => map.scrollWheelZoom.disable());
        map.on("move", () => element.matches(":focus-visible") && showPosition(map.getCenter()));
        element.addEventListener("keydown", (event) => {
            if (event.key === "Enter" && event.target === element) tell(map.getCenter());
        });
    }

    // Tells what lies in the square around a point.
    function tell({ lat, lng }) {
        const { left, top, cell, columns, rows } = shown;
        const cells = 2 ** Math.max(0, Math.ceil(Math.log2(askedWidth / pixels(cell))));
        const side = cell * cells;
        const column = Math.floor((lng - left) / side) * cells;
        const row = Math.floor((lat - top) / side) * cells;
        const sums = { kept: 0, removed: 0 };
        for (let y = Math.max(0, row); y < Math.min(rows, row + cells); ++y) {
            for (let x = Math.max(0, column); x < Math.min(columns, column + cells); ++x) {
                sums.kept += shown.kept[y * columns + x];
                sums.removed += shown.removed[y * columns + x];
            }
        }
        const x1 = left + column * cell, y1 = top + row * cell, x2 = x1 + side - 1, y2 = y1 + side - 1;
        mark.setBounds(area(x1, y1, x2 + 1, y2 + 1)).addTo(map);
        const blocks = make("strong", {}, count(sums.kept + sums.removed, "block"));
        const text = [`x ${x1} to ${x2}, y ${y1} to ${y2}: `, blocks];
        if (!survey) text.push(`, ${format(sums.removed)} ${words.go}, ${format(sums.kept)} ${words.stay}`);
        const touched = rectangles.filter((one) => one.x1 <= x2 && one.x2 >= x1 && one.y1 <= y2 && one.y2 >= y1);
        const names = touched.slice(0, 20).flatMap((one, index) => [index ? ", " : "", foreign(one.name, "")]);
        if (touched.length > 0) text.push(`. In ${touched.length === 1 ? "rectangle" : "rectangles"} `, ...names);
        if (touched.length > 20) text.push(` and ${format(touched.length - 20)} more`);
        byId("found").replaceChildren(...text, ".");
    }

    // On paper the map is as wide as the paper and light.
    function fitForPrint(start) {
        const bounds = start ? map.getBounds() : null;
        document.documentElement.classList.toggle("printing", start);
        map.invalidateSize({ animate: false });
        if (bounds) map.fitBounds(bounds, { animate: false });
        paint(true);
    }
}

// Below

function showMore() {
    const section = (title, child) => byId("more").append(make("section", {}, make("h2", {}, title), child));
    const list = (texts) => make("ul", {}, ...texts.map((text) => make("li", {}, foreign(text, "no code"))));
    if (report.warnings.length > 0) section("Warnings", list(report.warnings));
    if (report.notes.length > 0) section("Notes", list(report.notes));
    const { lines, first } = report.linesOutside;
    if (lines > 0) section("Lines outside blocks", make("p", {}, `${format(lines)}, the first one is line ${first}.`));
    if (report.codesNotFound.length > 0) section("Codes of the list that no block has", list(report.codesNotFound));
    if (report.filters.length > 0) {
        section("By filter", makeTable(["Filter", "Selects"],
            report.filters.map((filter) => [filterName(filter), filter.selected])));
    }
    if (report.all.blocks === 0) return;
    section("By first word of the header", makeTable(["Word", ...tallyHeadings],
        report.headers.map((row) => [foreign(row.word, "no word"), ...tallyCells(row)])));
    const facets = report.facets.map((row) => [String(row.facet), ...tallyCells(row),
        `${row.bounds.x1} to ${row.bounds.x2}`, `${row.bounds.y1} to ${row.bounds.y2}`]);
    if (report.otherFacets.blocks > 0) facets.push(["other facets", ...tallyCells(report.otherFacets), "", ""]);
    facets.push(["without a position", ...tallyCells(report.unplaced), "", ""]);
    section("By facet", makeTable(["Facet", ...tallyHeadings, "x", "y"], facets));
}

function filterName({ filter, selects, value }) {
    const isIn = selects === "in";
    if (filter === "facet") return `${isIn ? "on" : "not on"} facet ${value}`;
    if (filter === "items") return `code ${isIn ? "in" : "not in"} the list`;
    return `${isIn ? "in" : "not in"} a rectangle`;
}

showTop();
showMore();
showSums();
if (report.all.blocks > 0) {
    byId("look").hidden = false;
    showCodes();
    showMaps();
}
})();
