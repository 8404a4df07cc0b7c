// The check of an application's scripts: from their texts to findings. One call from outside,
// checkScripts, which takes and gives JSON.

/** The table of the script API, by paths such as "morvik.led.light". */
class Api {
  constructor(table) {
    this.types = new Map(table.types.map((type) => [type.name, type]));
    this.shapes = new Map(table.shapes.map((shape) => [shape.name, shape]));
    this.objects = new Map(table.objects.filter((object) => object.name !== '').map((object) => [object.name, object]));
    this.functions = new Map();
    this.values = new Map();
    for (const object of table.objects) {
      const prefix = object.name === '' ? '' : `${object.name}.`;
      for (const one of object.functions) this.functions.set(prefix + one.name, one);
      for (const one of object.values) this.values.set(prefix + one.name, one.type);
    }
    this.globals = [...this.objects.keys(), ...this.functions.keys(), ...this.values.keys()].filter((path) => !path.includes('.'));
  }

  has(path) {
    return this.objects.has(path) || this.functions.has(path) || this.values.has(path);
  }

  isGlobal(name) {
    return this.globals.includes(name);
  }

  membersOf(object) {
    const all = [...this.objects.keys(), ...this.functions.keys(), ...this.values.keys()];
    return all.filter((path) => path.startsWith(`${object}.`)).map((path) => path.slice(object.length + 1)).filter((name) => !name.includes('.'));
  }

  signature(path) {
    const description = this.functions.get(path);
    const names = description.arguments.map((argument) => argument.name + (argument.optional ? '?' : ''));
    if (description.callback) names.push(description.callback.needed ? 'fn' : 'fn?');
    for (const argument of description.after ?? []) names.push(`${argument.name}?`);
    return `${path}(${names.join(', ')})`;
  }
}

// In a function nobody knows when it runs; at the top it is the first run of main.js.
function isAtTop(ancestors) {
  return !ancestors.some((node) => kFunctions.has(node.type) || node.type === 'ClassBody');
}

function isInclude(node) {
  return node.type === 'CallExpression' && node.callee.type === 'Identifier' && node.callee.name === 'include' && node.arguments.length === 1;
}

function isInTry(ancestors) {
  return ancestors.some((node, i) => node.type === 'TryStatement' && ancestors[i + 1] === node.block);
}

class Check {
  constructor({ table, files, names, granted, app }) {
    this.api = new Api(table);
    this.sources = files;
    this.granted = granted;
    this.findings = [];
    this.failed = false;
    this.current = null;
    const report = (node, kind, text, cure) => this.report(node, kind, text, cure);
    this.folder = new Folder(names, app, report);
    this.trees = this.readAll();
    this.program = new Program(this.trees);
    this.calls = new Calls(this.program, this.api, this.folder, report);
    this.callbacks = new Callbacks(this.program, this.api, report);
    this.names = new Names(this.program, this.api, granted, report);
    this.called = new Map(); // path to the first call's [file, node]
  }

  report(node, kind, text, cure) {
    const { line, column } = node.loc.start;
    this.findings.push({ file: node.file ?? this.current, line, column: column + 1, kind, text, cure });
  }

  parse(name) {
    try {
      return acorn.parse(this.sources[name], { ecmaVersion: 'latest', locations: true, allowHashBang: true });
    } catch (problem) {
      this.failed = true; // the engine tells the place; without a tree there is nothing more to say
      return null;
    }
  }

  /** main.js and what it includes, in the order in which they are read. */
  readAll() {
    const trees = [];
    const reading = [];
    const seen = new Set();
    const read = (name) => {
      seen.add(name);
      const tree = this.parse(name);
      if (tree === null) return;
      trees.push({ name, tree });
      reading.push(name);
      walk(tree, (node, ancestors) => {
        if (isInclude(node)) this.followInclude(node, name, isAtTop(ancestors), reading, seen, read);
      });
      reading.pop();
    };
    this.atTop = new Set(['main.js']); // files whose top runs in the first run of main.js
    if ('main.js' in this.sources) read('main.js');
    this.reached = [...seen];
    return trees;
  }

  followInclude(node, from, isTop, reading, seen, read) {
    const argument = node.arguments[0];
    if (argument.type !== 'Literal' || typeof argument.value !== 'string') return this.followAny(seen, read);
    const name = plainName(argument.value);
    if (reading.includes(name)) {
      this.current = from;
      this.report(node, 'include-circle', `${[...reading.slice(reading.indexOf(name)), name].join(' includes ')}, and so for ever`, 'Include each file once, from main.js.');
    } else if (name in this.sources && !seen.has(name)) {
      if (isTop && this.atTop.has(from)) this.atTop.add(name);
      read(name);
    }
  }

  // A name that is made while the program runs may be that of any script.
  followAny(seen, read) {
    for (const name of Object.keys(this.sources)) {
      if (!seen.has(name)) read(name);
    }
  }

  run() {
    this.eachNode((node) => this.names.takeGuards(node));
    this.eachNode((node, ancestors) => this.look(node, ancestors));
    this.folder.finish();
    this.lookAtWhole();
    // What is missing or cannot be read may declare anything.
    if (this.failed || this.folder.lacksScript) this.findings = this.findings.filter(({ kind }) => kind !== 'not-defined');
    return {
      findings: this.findings,
      reached: this.reached,
      read: [...this.folder.read],
      used: this.failed || this.names.everything ? null : [...this.names.used],
    };
  }

  eachNode(visit) {
    for (const { name, tree } of this.trees) {
      this.current = name;
      walk(tree, (node, ancestors) => {
        node.file = name;
        visit(node, ancestors);
      });
    }
  }

  look(node, ancestors) {
    this.names.check(node, ancestors);
    if (node.type !== 'CallExpression') return;
    const path = this.program.pathOf(node.callee);
    const description = this.api.functions.get(path);
    if (!description) return;
    if (!this.called.has(path)) this.called.set(path, node);
    const unread = this.folder.unread.length;
    const callback = this.calls.check(node, path, description);
    if (isInTry(ancestors)) this.folder.unread.length = unread; // it is known that the file may be missing
    if (callback) this.callbacks.check(callback, path, description.callback ?? { hears: [] });
    if (path === 'morvik.serial.addListener__' && node.arguments.length > 0) this.callbacks.checkObject(node.arguments[0], path);
    if (this.atTop.has(node.file) && isAtTop(ancestors)) this.lookAtTop(node, path, description);
  }

  lookAtTop(node, path, description) {
    if (path === 'exit') {
      this.report(node, 'exit-at-top', 'exit() does nothing while main.js runs for the first time', 'setTimeout(0, exit) ends the application from here.');
    }
    if (!description.interactive) return;
    this.toldOfTop = true;
    this.report(node, 'not-interactive', `${path} throws "Must be in interactive mode" here`, 'Call it in the function that morvik.start calls.');
  }

  lookAtWhole() {
    const start = this.called.get('morvik.start');
    if (this.failed || this.names.everything) return;
    if (start && !this.called.has('morvik.connect')) {
      this.report(start, 'never-connected', 'nothing connects to the device server, so this throws "Connect first"', 'morvik.connect(host, port) comes before.');
    }
    const first = [...this.called].find(([path]) => this.api.functions.get(path).interactive);
    if (start || !first || this.toldOfTop) return;
    this.report(first[1], 'not-interactive', `nothing asks for interactive mode, so ${first[0]} throws "Must be in interactive mode"`, 'Call it in the function that morvik.start calls.');
  }
}

// Of a program that is nested so deeply that it cannot be walked nothing is known.
function checkScripts(input) {
  const given = JSON.parse(input);
  try {
    return JSON.stringify(new Check(given).run());
  } catch (problem) {
    if (!(problem instanceof RangeError)) throw problem;
    return JSON.stringify({ findings: [], reached: Object.keys(given.files), read: [], used: null });
  }
}
