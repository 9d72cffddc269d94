// What is shown, as files. Frames are written in the tables of the tool's own formats. Switches have
// a table of their own, of milliseconds and with the end of each, which the tool does not write.

function csvOf(header, rows) {
    return [header, ...rows].map((row) => `${row.join(",")}\n`).join("");
}

function shownCsv(shown) {
    if (shown.switches) {
        return csvOf(["start_ms", "end_ms", "shape"], shown.switches.map(
            ({ start_ms, end_ms, label }) => [start_ms, end_ms, label]));
    }
    const labels = shown.set?.shapes ??
        [...new Set(shown.frames.flatMap(({ weights }) => Object.keys(weights)))].sort();
    return csvOf(["time_ms", ...labels], shown.frames.map(({ start_ms, weights }) =>
        [start_ms, ...labels.map((label) => (weights[label] ?? 0).toFixed(4))]));
}

// Of phonemes all that was found, so that the tool reads it again.
function shownJson({ set, strength, switches, frames, rawCurves, findings: { result } }) {
    const { version, audio, duration_ms } = result;
    const document = set
        ? { version, audio, duration_ms, set: set.name, strength, shapes: set.shapes,
            ...(switches ? { switches: switches.map(({ start_ms, end_ms, label }) =>
                ({ start_ms, end_ms, shape: label })) } : { frames }) }
        : { ...result, strength, frames, curves: rawCurves };
    return `${JSON.stringify(document, null, 1)}\n`;
}

function saveFile(name, type, text) {
    const link = document.createElement("a");
    link.href = URL.createObjectURL(new Blob([text], { type }));
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}
