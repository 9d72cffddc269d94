"use strict";

const lines = JSON.parse(document.getElementById("data").textContent);
const kRowsAtOnce = 200;
const byId = (id) => document.getElementById(id);

// The state of a line: failed, its verdict, or heard, for one without a text.
function stateOf(line) {
    return line.status === "failed" ? "failed" : line.verdict ?? "heard";
}

// Why a line failed or does not fit, without the name of its recording.
function whyOf(line) {
    const why = line.reason ?? line.why;
    return why?.startsWith(`${line.audio}: `) ? why.slice(line.audio.length + 2) : why;
}

const kStates = ["failed", "poor", "doubtful", "unknown", "good", "heard"];
const seconds = (ms) => ms / 1000;
const percent = (share) => `${Math.round(share * 100)} %`;
const fixed = (digits) => (value) => value.toFixed(digits);
// What a recording ought not to exceed.
const kFewClips = 2;
const kNoisyDb = 20; // above the pauses, the speech should be
const kLongSilenceMs = 1000;
const kRates = [5, 20]; // phonemes a second, that people speak

const columns = [
    { name: "Line", of: (line) => line.line, number: true },
    { name: "Name", of: (line) => line.name, kind: "name" },
    { name: "Speaker", of: (line) => line.speaker, optional: true },
    { name: "Verdict", of: (line) => kStates.indexOf(stateOf(line)), show: (_, line) => stateOf(line),
        kindOf: stateOf },
    { name: "Fits", of: (line) => line.confidence, show: percent, number: true },
    { name: "Why", of: whyOf, kind: "why" },
    { name: "Not said", of: (line) => line.unsaid?.length, number: true, isBad: () => true },
    { name: "Not in lexicon", of: (line) => line.unknown?.length, number: true },
    { name: "Length s", of: (line) => line.duration_ms, show: (ms) => seconds(ms).toFixed(2),
        number: true },
    { name: "Level dB", of: (line) => line.level_db, show: fixed(1), number: true },
    { name: "Noise dB", of: (line) => line.noise_db, show: fixed(1), number: true,
        isBad: (db, line) => line.level_db - db < kNoisyDb },
    { name: "Clipped", of: (line) => line.clip_count || undefined, number: true,
        isBad: (count) => count > kFewClips },
    { name: "Silence s", of: (line) => line.silence_start_ms === undefined ? undefined
        : Math.max(line.silence_start_ms, line.silence_end_ms),
        show: (_, line) => `${seconds(line.silence_start_ms).toFixed(1)} + ` +
            seconds(line.silence_end_ms).toFixed(1),
        number: true, isBad: (ms) => ms > kLongSilenceMs },
    { name: "Phonemes a s", of: (line) => line.phonemes_per_s, show: fixed(1), number: true,
        isBad: (rate) => rate < kRates[0] || rate > kRates[1] },
    { name: "Words a s", of: (line) => line.words_per_s, show: fixed(1), number: true },
].filter((column) => !column.optional || lines.some((line) => column.of(line) !== undefined));

// First what has to be looked at: the states in their order, and of each what fits worst.
let sorting = { column: columns.find((column) => column.name === "Verdict"), factor: 1 };
let shownState = null;
let shownCount = kRowsAtOnce;
let shown = [];

function element(tag, properties = {}, ...children) {
    const made = Object.assign(document.createElement(tag), properties);
    made.append(...children);
    return made;
}

function compare(a, b) {
    const [x, y] = [sorting.column.of(a), sorting.column.of(b)];
    if (x === y) {
        return (a.confidence ?? 2) - (b.confidence ?? 2) || a.line - b.line;
    }
    if (x === undefined || y === undefined) {
        return x === undefined ? 1 : -1; // what a line does not have comes last, either way
    }
    return sorting.factor * (typeof x === "number" ? x - y : String(x).localeCompare(String(y)));
}

function cellOf(column, line) {
    const value = column.of(line);
    const cell = element("td");
    cell.className = [column.number ? "number" : "", column.kind ?? "",
        column.kindOf?.(line) ?? ""].join(" ").trim();
    if (value !== undefined) {
        cell.textContent = column.show ? column.show(value, line) : value;
        cell.classList.toggle("warn", column.isBad?.(value, line) ?? false);
    }
    return cell;
}

function viewCommand(line) {
    const json = line.outputs?.find((file) => /(?<!\.switches)\.json$/.test(file));
    const quoted = (text) => `'${text.replaceAll("'", "'\\''")}'`;
    return json && `tessarin view ${quoted(line.audio)} --timings ${quoted(json)} ` +
        `-o ${quoted(`${line.name.split("/").pop()}.html`)}`;
}

function detailsOf(line) {
    const list = element("dl");
    const add = (name, value) => value &&
        list.append(element("dt", { textContent: name }), element("dd", {}, value));
    add("Text", line.text);
    add("Reason", whyOf(line));
    add("Not said", line.unsaid?.join(" "));
    add("Not in the lexicon", line.unknown?.map((word) => `${word.word}=${word.phonemes}`).join("  "));
    add("Other speech", line.other_speech_ms && `${seconds(line.other_speech_ms).toFixed(1)} s`);
    add("Notes", line.notes?.join("; "));
    add("Recording", line.audio);
    for (const file of line.outputs ?? []) {
        add("Output", element("a", { href: encodeURI(file), textContent: file }));
    }
    const command = viewCommand(line);
    add("To see it", command && element("code", { textContent: command }));
    return element("tr", { className: "detail" },
        element("td", { colSpan: columns.length }, list));
}

function openLine(line, row) {
    if (line.page) {
        location.href = encodeURI(line.page);
    } else if (row.nextSibling?.className === "detail") {
        row.nextSibling.remove();
        row.ariaExpanded = "false";
    } else {
        row.after(detailsOf(line));
        row.ariaExpanded = "true";
    }
}

function rowOf(line) {
    const row = element("tr", { className: "line", tabIndex: 0 },
        ...columns.map((column) => cellOf(column, line)));
    row.addEventListener("click", () => openLine(line, row));
    row.addEventListener("keydown", (event) => event.key === "Enter" && openLine(line, row));
    return row;
}

function showRows() {
    byId("rows").replaceChildren(...shown.slice(0, shownCount).map(rowOf));
    byId("more").hidden = shown.length <= shownCount;
    byId("count").textContent = `${shown.length} of ${lines.length} lines`;
}

function update() {
    const wanted = byId("search").value.toLowerCase();
    shown = lines.filter((line) => (shownState === null || stateOf(line) === shownState) &&
        [line.name, line.speaker, line.text].some((text) => text?.toLowerCase().includes(wanted)))
        .sort(compare);
    shownCount = kRowsAtOnce;
    showRows();
    for (const [i, cell] of [...byId("head").children].entries()) {
        cell.ariaSort = columns[i] !== sorting.column ? "none"
            : sorting.factor > 0 ? "ascending" : "descending";
        cell.firstChild.textContent = columns[i].name +
            (columns[i] !== sorting.column ? "" : sorting.factor > 0 ? " ▲" : " ▼");
    }
    for (const button of byId("states").children) {
        button.ariaPressed = String(button.value === (shownState ?? ""));
    }
}

function sortBy(column) {
    sorting = { column, factor: sorting.column === column ? -sorting.factor : 1 };
    update();
}

function showStates() {
    const counts = Map.groupBy ? Map.groupBy(lines, stateOf) : new Map(kStates.map((state) =>
        [state, lines.filter((line) => stateOf(line) === state)]));
    const add = (state, count) => {
        const button = element("button", { value: state ?? "", className: state ?? "",
            textContent: `${state ?? "all"} ${count}` });
        button.addEventListener("click", () => { shownState = state; update(); });
        byId("states").append(button);
    };
    add(null, lines.length);
    for (const state of kStates.filter((each) => counts.get(each)?.length)) {
        add(state, counts.get(state).length);
    }
}

function showWords() {
    const words = new Map();
    for (const { word, phonemes } of lines.flatMap((line) => line.unknown ?? [])) {
        const known = words.get(word.toUpperCase());
        words.set(word.toUpperCase(), { phonemes, count: (known?.count ?? 0) + 1 });
    }
    byId("words").hidden = words.size === 0;
    document.querySelector("#words summary").textContent =
        `${words.size} words that the lexicon lacks`;
    document.querySelector("#words textarea").value = [...words].sort(([, a], [, b]) =>
        b.count - a.count).map(([word, { phonemes }]) => `${word}=${phonemes}\n`).join("");
}

for (const column of columns) {
    const button = element("button", { textContent: column.name });
    button.addEventListener("click", () => sortBy(column));
    byId("head").append(element("th", { scope: "col", className: column.number ? "number" : "" },
        button));
}
byId("search").addEventListener("input", update);
byId("more").addEventListener("click", () => {
    shownCount += kRowsAtOnce;
    showRows();
});
showStates();
showWords();
update();
