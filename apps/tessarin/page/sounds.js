// The kinds of sounds, each with a colour of its own in the style sheet.

const SOUND_CLASSES = [
    { name: "closed", title: "lips closed", labels: "p b m" },
    { name: "teeth", title: "teeth on lip", labels: "f v" },
    { name: "tongue", title: "tongue", labels: "TH DH t d n l" },
    { name: "hiss", title: "hiss", labels: "s z SH ZH CH j" },
    { name: "back", title: "back", labels: "k g NG" },
    { name: "open", title: "open vowel", labels: "AA AE AH AW AY" },
    { name: "mid", title: "half open", labels: "EH EY IH IY y h" },
    { name: "round", title: "rounded", labels: "AO OW OY UH UW w r ER" },
    { name: "rest", title: "rest", labels: "x" },
];
const CLASS_OF_LABEL = Object.fromEntries(
    SOUND_CLASSES.flatMap(({ name, labels }) => labels.split(" ").map((label) => [label, name])));
