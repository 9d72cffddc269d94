// The package as programs see it.

export { Engine } from "./engine.js";
export { TessarinError } from "./errors.js";
export { weightsAt } from "./weights.js";
