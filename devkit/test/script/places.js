// Where in the author's files something stands.

// The test itself ends with it; `place` is where it was asked for, `difference` and `story` are for
// the reader.
class Failure extends Error {
  constructor(message, place, more = {}) {
    super(message);
    this.place = place;
    Object.assign(this, more);
  }
}

const placesOfErrors = new WeakMap();

Error.stackTraceLimit = 50;
Error.prepareStackTrace = (error, sites) => {
  const own = sites.find((site) => site.getFileName() && site.getFileName() !== ownName);
  if (own) {
    placesOfErrors.set(error, {
      file: own.getFileName(), line: own.getLineNumber(), column: own.getColumnNumber()
    });
  }
  return String(error) + sites.map((site) => '\n    at ' + site).join('');
};

// Of an error, where it was made; nothing for what is none, and for one of the engine's alone.
function placeOf(error) {
  if (!isObject(error)) return undefined;
  if (error instanceof Failure) return error.place;
  void error.stack; // asks the function above
  return placesOfErrors.get(error);
}

function placeOfCaller() {
  return placeOf(new Error());
}
