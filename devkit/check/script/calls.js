// Calls of the script API: how many arguments, of which kind, and what their values are.

const kArticle = { function: 'a function', number: 'a number', string: 'a text', boolean: 'true or false', object: 'an object', null: 'null', undefined: 'undefined' };

function many(count, word) {
  return count === 0 ? `no ${word}` : `${count} ${word}${count === 1 ? '' : 's'}`;
}

class Calls {
  constructor(program, api, folder, report) {
    Object.assign(this, { program, api, folder, report });
  }

  /** Judges one call; gives the node of the function that is to be called back, or null. */
  check(call, path, description) {
    if (call.arguments.some((argument) => argument.type === 'SpreadElement')) return null;
    if (path === 'setTimeout' && this.isSwapped(call)) return call.arguments[0];
    const { values, callback, wrong } = this.split(call, description);
    if (wrong) return this.tellCount(call, path, description);
    description.arguments.forEach((argument, i) => {
      if (i < values.length) this.checkArgument(values[i], argument, path, description);
    });
    if (callback && description.callback.never) {
      this.report(callback, 'never-called', `${path} takes a function and never calls it`, 'Leave it out; setTimeout can count the time.');
    }
    return callback;
  }

  kind(node) {
    return this.program.kindOf(node, this.api);
  }

  isSwapped(call) {
    if (call.arguments.length !== 2 || this.kind(call.arguments[0]) !== 'function') return false;
    this.report(call, 'timeout-swapped', 'setTimeout takes the milliseconds first', 'setTimeout(1000, function () { ... });');
    return true;
  }

  // The arguments in front, and the function behind them.
  split(call, description) {
    const given = call.arguments;
    const { callback, after = [] } = description;
    const most = description.arguments.length;
    const least = description.arguments.filter((argument) => !argument.optional).length;
    if (description.free) return { values: [] };
    if (!callback) return { values: given, wrong: given.length < least || given.length > most };
    if (callback.needed && most === 0) return this.onlyCallback(given, after);
    if (given.length === most + 1) return this.lastIsCallback(given);
    const last = description.arguments[given.length - 1];
    if (last?.optional && !last.strict && this.kind(given[given.length - 1]) === 'function') return this.lastIsCallback(given);
    return { values: given, wrong: callback.needed || given.length < least || given.length > most };
  }

  onlyCallback(given, after) {
    const wrong = given.length < 1 || given.length > 1 + after.length || !this.mayBeFunction(given[0]);
    return { values: [], callback: given[0], wrong };
  }

  lastIsCallback(given) {
    const callback = given[given.length - 1];
    return { values: given.slice(0, -1), callback, wrong: !this.mayBeFunction(callback) };
  }

  mayBeFunction(node) {
    return ['function', 'unknown'].includes(this.kind(node));
  }

  tellCount(call, path, description) {
    const thrown = description.throws[0] ?? (description.interactive ? 'Must be in interactive mode' : null);
    const given = call.arguments.map((argument) => kArticle[this.kind(argument)] ?? 'a value').join(', ');
    this.report(call, 'wrong-count', `${path} is called with ${given || 'nothing'}` + (thrown ? `, and throws "${thrown}"` : ''),
      `It is ${this.api.signature(path)}.`);
    return null;
  }

  checkArgument(node, argument, path, description) {
    const type = this.api.types.get(argument.type);
    if (!type) return this.checkPlain(node, argument, path);
    const kind = this.kind(node);
    if (kind === 'unknown' || (kind === 'null' && type.orNull)) return;
    if (!this.fits(kind, type, argument.strict)) return this.tellKind(node, kind, argument, type, path, description);
    const known = this.program.constant(node);
    if (known !== null) this.checkValue(node, known.value, argument, type, path);
  }

  checkPlain(node, argument, path) {
    const kind = this.kind(node);
    if (argument.type !== 'boolean' || ['boolean', 'unknown'].includes(kind)) return;
    this.report(node, 'wrong-argument', `${path} takes true or false for ${argument.name}, and ${kArticle[kind]} stands there`,
      'Anything but true and false counts by its truth: the text "no" is true.');
  }

  fits(kind, type, strict) {
    if (type.takes === 'number') return kind === 'number' || (!strict && kind === 'string');
    if (type.takes === 'string') return kind === 'string';
    if (type.takes === 'object') return kind === 'object';
    if (type.takes === 'source') return kind === 'string' || kind === 'object';
    return kind === 'string' || (!strict && (kind === 'number' || kind === 'boolean'));
  }

  tellKind(node, kind, argument, type, path, description) {
    const wanted = { number: 'a number', object: 'an object', source: 'a text or a data object' }[type.takes] ?? 'a text';
    const thrown = argument.strict && description.throws[0];
    const effect = thrown ? `: it throws "${thrown}"` : type.takes === 'number' ? ': the device gets 0' : '';
    const dropped = kind === 'function' && !thrown ? ', and the function is never called' : '';
    this.report(node, 'wrong-argument', `${argument.name} of ${path} is ${wanted}, and ${kArticle[kind]} stands there${effect}${dropped}`,
      `It is ${this.api.signature(path)}.`);
  }

  checkValue(node, value, argument, type, path) {
    if (type.takes === 'number') this.checkNumber(node, Number(value), argument, type, path);
    if (argument.type === 'Color' && !isColor(String(value))) {
      this.report(node, 'unknown-color', `no device knows the colour ${JSON.stringify(value)}`,
        `${meantColor(String(value))}A colour is a name, or #rrggbb.`);
    }
    if (type.names && !type.names.includes(value)) {
      this.report(node, 'unknown-name', `${path} knows no ${JSON.stringify(value)}`, meant(String(value), type.names));
    }
    if (argument.type === 'FileName') this.folder.checkName(node, value, path);
    if (argument.type === 'Source' && typeof value === 'string') this.folder.checkSource(node, value);
  }

  checkNumber(node, value, argument, type, path) {
    const isPlace = type.whole && type.orNull;
    if (Number.isNaN(value)) {
      this.report(node, 'wrong-argument', `${argument.name} of ${path} is a number`, `It is ${this.api.signature(path)}.`);
    } else if (value < type.least || value > type.most) {
      this.report(node, isPlace ? 'ear-position' : 'out-of-range', `${argument.name} of ${path} is ${value}`, `It is from ${type.least} to ${type.most}.`);
    } else if (type.whole && !Number.isInteger(value)) {
      this.report(node, isPlace ? 'ear-position' : 'out-of-range', `${argument.name} of ${path} is ${value}`, 'It is a whole number.');
    }
  }
}

function meantColor(text) {
  const name = nearest(text, kColorNames);
  return name === null ? '' : `Is ${name} meant? `;
}
