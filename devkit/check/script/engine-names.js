// What the language itself brings, read before anything else is loaded here.
const kEngineNames = new Set([globalThis, Object.prototype].flatMap((object) => Object.getOwnPropertyNames(object)));
