// The drawn face. Its drawing takes the weights of phonemes, so each viseme is shown by one of its.

/* global Mouth */

const PHONEME_OF_VISEME = {
    sil: "x", PP: "p", FF: "f", TH: "TH", DD: "d", kk: "k", CH: "CH", SS: "s", nn: "n", RR: "r",
    aa: "AA", E: "EH", ih: "IH", oh: "AO", ou: "UW",
};

export class Face {
    static async load(place, url) {
        place.innerHTML = await (await fetch(url)).text();
        return new Face(new Mouth(place.querySelector("svg")));
    }

    constructor(mouth) {
        this.mouth = mouth;
        this.mouth.show({ x: 1 });
    }

    show(shapes, weights) {
        if (weights) {
            this.mouth.show(Object.fromEntries(
                shapes.names.map((name, i) => [PHONEME_OF_VISEME[name], weights[i]])));
        }
    }
}
