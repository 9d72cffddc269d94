/** What the engine refuses, with its code: those of TESSARIN_… in tessarin_c.h. */
export class TessarinError extends Error {
    constructor(code, message, result) {
        super(message);
        this.name = "TessarinError";
        this.code = code;
        /** What was found before a search lost its text, or undefined. */
        this.result = result;
    }
}

export const RECOGNITION_FAILED = 8;

/** As one thread sends an error to another. */
export const packError = (error) => ({
    code: error.code, message: error.message, name: error.name, result: error.result,
});

export function unpackError({ code, message, name, result }) {
    if (name === "TessarinError") {
        return new TessarinError(code, message, result);
    }
    const Type = { RangeError, TypeError }[name] ?? Error;
    return new Type(message);
}
