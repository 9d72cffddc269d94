// What is at the cursor, in words and in the numbers of the JSON.

function spanText(span) {
    return span ? `${span.start_ms}–${span.end_ms} ms` : "";
}

// The score of a phoneme says how strong its sound is. Its scale ends at 100, which loud sounds
// exceed.
function strengthText(phoneme) {
    return Number.isFinite(phoneme?.score)
        ? `${Math.round(clamp(phoneme.score, 0, 100))} of 100` : "";
}

class Readout {
    constructor(shown, elements, colourOf) {
        this.mouth = shown;
        this.findings = shown.findings;
        this.elements = elements;
        this.colourOf = colourOf;
        this.shown = "";
        this.rows = new Map();
    }

    show(ms) {
        const { words, phonemes } = this.findings;
        const word = words[indexAt(words, ms)];
        const phoneme = phonemes[indexAt(phonemes, ms)];
        const index = this.findings.frameIndexAt(ms);
        const frame = this.mouth.frames[index];
        const mouth = this.mouth.mouthFrames[index];
        this.elements.time.textContent = clockText(ms);
        const key = [word?.start_ms, phoneme?.start_ms, index, this.mouth.strength,
            this.mouth.set?.name].join();
        if (key === this.shown) {
            return;
        }
        this.shown = key;
        const { elements } = this;
        elements.word.textContent = word?.text ?? "–";
        elements.wordTime.textContent = spanText(word);
        elements.confidence.textContent = confidenceText(word);
        elements.phoneme.textContent = phoneme?.label ?? "–";
        elements.phonemeTime.textContent = spanText(phoneme);
        elements.score.textContent = strengthText(phoneme);
        elements.frame.textContent = frame ? String(index) : "–";
        elements.frameTime.textContent = spanText(frame);
        elements.mouthWords.textContent = frame ? mouthInWords(mouth.weights) : "";
        elements.mouthWords.hidden = !frame;
        this.showWeights(frame?.weights ?? {});
    }

    // The same row serves as many weights as there are, so that the page does not jump.
    showWeights(weights) {
        const list = this.elements.weights;
        list.classList.toggle("long", Object.keys(weights).some((label) => label.length > 4));
        const entries = Object.entries(weights);
        while (list.children.length < entries.length) {
            list.append(this.elements.weightRow.content.cloneNode(true));
        }
        [...list.children].forEach((row, i) => {
            row.hidden = i >= entries.length;
            if (row.hidden) {
                return;
            }
            const [label, weight] = entries[i];
            row.dataset.label = label;
            row.querySelector(".label").textContent = label;
            row.querySelector(".value").textContent = String(weight);
            const bar = row.querySelector(".bar i");
            bar.style.width = `${100 * Math.min(1, weight)}%`;
            bar.style.background = this.colourOf(label);
        });
    }

    // For those who hear the page.
    describe(ms) {
        const { words, phonemes } = this.findings;
        const word = words[indexAt(words, ms)]?.text;
        const phoneme = phonemes[indexAt(phonemes, ms)]?.label;
        const frame = this.mouth.mouthFrames[this.findings.frameIndexAt(ms)];
        return [`${(ms / 1000).toFixed(3)} seconds`, word && `word ${word}`,
            phoneme && (phoneme === "x" ? "silence" : `phoneme ${phoneme}`),
            frame && mouthInWords(frame.weights)]
            .filter(Boolean).join(", ");
    }
}

// Below this more of such words are wrong than right.
const UNSURE = 0.5;

function isUnsure(word) {
    return word.confidence < UNSURE;
}

function confidenceText(word) {
    return Number.isFinite(word?.confidence) ? `${Math.round(100 * word.confidence)} %` : "";
}

// The words as running text, the spoken one marked. Words that were not heard are struck out.
class Transcript {
    constructor(element, findings, onChoose) {
        this.element = element;
        this.words = findings.words;
        this.spans = this.fill(findings);
        this.current = -1;
        element.addEventListener("click", (event) => {
            const index = event.target.dataset?.word;
            if (index !== undefined) {
                onChoose(this.words[Number(index)]);
            }
        });
    }

    // In the order of the text, in which punctuation and tags stand among the words.
    fill({ words, unsaid, events }) {
        const spans = words.map((word, i) => {
            const span = document.createElement("span");
            span.dataset.word = i;
            span.textContent = word.text;
            span.classList.toggle("unsure", isUnsure(word));
            span.title = isUnsure(word) ? `confidence ${confidenceText(word)}` : "";
            return span;
        });
        const struckOut = (word) => {
            const node = document.createElement("del");
            node.textContent = word.text;
            node.title = "not heard";
            return node;
        };
        const entries = [
            ...words.map((word, i) => ({ span: word, node: spans[i] })),
            ...unsaid.map((word) => ({ span: word, node: struckOut(word) })),
            ...events.map((event) => ({ span: event, node: document.createTextNode(event.text) })),
        ];
        entries.sort((a, b) => a.span.text_offset - b.span.text_offset);
        let end = 0;
        for (const { span, node } of entries) {
            this.element.append(span.text_offset > end ? " " : "", node);
            end = span.text_offset + span.text_length;
        }
        this.element.hidden = words.length + unsaid.length === 0;
        return spans;
    }

    show(ms) {
        const index = indexAt(this.words, ms);
        if (index === this.current) {
            return;
        }
        this.spans[this.current]?.classList.remove("current");
        this.current = index;
        const span = this.spans[index];
        if (span) {
            span.classList.add("current");
            this.keepInSight(span);
        }
    }

    keepInSight(span) {
        const { element } = this;
        const top = span.offsetTop - element.offsetTop;
        const isHidden = top < element.scrollTop ||
            top + span.offsetHeight > element.scrollTop + element.clientHeight;
        if (isHidden) {
            element.scrollTop = top - element.clientHeight / 3;
        }
    }
}
