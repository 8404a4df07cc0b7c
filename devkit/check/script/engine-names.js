// What the language itself brings, read before anything else is loaded here.
const kEngineNames = new Set(Object.getOwnPropertyNames(globalThis));
