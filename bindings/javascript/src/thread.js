// A worker of the package, alike in browsers and in Node.

const inNode = globalThis.process?.versions?.node !== undefined;

/** Starts one: { post(message, transfer), terminate(), hold(isHeld) }. `onMessage` receives what it
    posts, `onFailure` the error that ends it. */
export async function startThread(onMessage, onFailure) {
    if (inNode) {
        const { Worker } = await import("node:worker_threads");
        const worker = new Worker(new URL("./worker.js", import.meta.url));
        worker.on("message", onMessage);
        worker.on("error", onFailure);
        worker.unref(); // a program may end while nothing is asked
        return {
            post: (message, transfer) => worker.postMessage(message, transfer),
            terminate: () => void worker.terminate(),
            hold: (isHeld) => isHeld ? worker.ref() : worker.unref(),
        };
    }
    const worker = new Worker(new URL("./worker.js", import.meta.url), { type: "module" });
    worker.onmessage = ({ data }) => onMessage(data);
    worker.onerror = (event) => onFailure(new Error(event.message || "the worker did not start"));
    return {
        post: (message, transfer = []) => worker.postMessage(message, transfer),
        terminate: () => worker.terminate(),
        hold: () => {},
    };
}

/** The other end, in the worker: { post(message, transfer) }. */
export async function thisThread(onMessage) {
    if (inNode) {
        const { parentPort } = await import("node:worker_threads");
        parentPort.on("message", onMessage);
        return { post: (message, transfer) => parentPort.postMessage(message, transfer) };
    }
    globalThis.onmessage = ({ data }) => onMessage(data);
    return { post: (message, transfer = []) => globalThis.postMessage(message, transfer) };
}
