// Names that a script uses: what the host does not have and what stands for it, what is missing for
// want of an access, and members that no object has.

const kTimer = 'setTimeout(ms, fn) calls fn again for as long as it returns true; there is no other timer.';
const kInclude = 'include(\'words.js\') runs another file of the folder in the same global object.';
const kNoBrowser = 'There is no browser here. docs/script-api.md tells what there is.';
const kWeb = 'http.get(url, headers) gives the body at once; grant http in descriptor.xml.';
const kEncoding = 'JavaScript\'s own encodeURIComponent and String functions are there.';

const kInstead = {
  setInterval: kTimer, clearInterval: kTimer, clearTimeout: 'A timer ends when its function does not return true.', setImmediate: 'setTimeout(0, fn) does that.',
  queueMicrotask: 'Promise.resolve().then(fn) does that.', requestAnimationFrame: kTimer, process: 'appName, instanceName and cmdline tell of the launch line.',
  require: kInclude, module: kInclude, exports: kInclude, define: kInclude,
  fetch: kWeb, XMLHttpRequest: kWeb, WebSocket: kWeb, window: kNoBrowser, document: kNoBrowser, navigator: kNoBrowser, location: kNoBrowser, self: kNoBrowser,
  alert: 'log(value) writes to the log.', print: 'log(value) writes to the log.', localStorage: 'file.write and file.read keep texts in the folder.',
  sessionStorage: 'file.write and file.read keep texts in the folder.', Buffer: kEncoding, TextEncoder: kEncoding, TextDecoder: kEncoding, btoa: kEncoding, atob: kEncoding,
  URL: kEncoding, URLSearchParams: kEncoding, WebAssembly: 'It is switched off on a device.', global: 'globalThis is the global object.',
};

class Names {
  constructor(program, api, granted, report) {
    Object.assign(this, { program, api, granted, report });
    this.used = new Set(); // access names
    this.told = new Set();
    this.everything = false; // the program may use any access
    this.guards = new Set(); // paths that are asked for before they are used
  }

  /** Takes what a program asks for: `if (morvik.led)`, `typeof fetch`. */
  takeGuards(node) {
    if (node.type === 'UnaryExpression' && node.operator === 'typeof') this.guardTypeof(node.argument);
    if (node.type === 'IfStatement' || node.type === 'ConditionalExpression') this.guardTest(node.test);
    if (node.type === 'LogicalExpression') this.guardTest(node.left);
    if (node.type === 'MemberExpression' && node.optional) this.guard(node.object);
    const asked = node.type === 'MemberExpression' && propertyName(node) === 'hasOwnProperty' ? node.object : null;
    const within = node.type === 'BinaryExpression' && node.operator === 'in' ? node.right : asked;
    if (within !== null && this.api.objects.has(this.program.pathOf(within))) this.everything = true;
  }

  guardTypeof(node) {
    if (node.type === 'Identifier') this.guards.add(node.name);
    this.guard(node);
  }

  guardTest(node) {
    if (node.type === 'UnaryExpression') this.guardTest(node.argument);
    if (node.type === 'LogicalExpression') [node.left, node.right].forEach((side) => this.guardTest(side));
    if (node.type === 'BinaryExpression') [node.left, node.right].forEach((side) => this.guardTest(side));
    if (node.type === 'MemberExpression') this.guard(node);
  }

  guard(node) {
    const path = this.program.pathOf(node);
    if (path !== null) this.guards.add(path);
  }

  check(node, ancestors) {
    if (node.type === 'MemberExpression') return this.checkMember(node, ancestors);
    if (node.type === 'Identifier' && this.isUse(node, ancestors)) this.checkName(node, ancestors);
    if (node.type === 'VariableDeclarator' && node.id.type === 'ObjectPattern' && node.init) this.checkPattern(node);
    if (node.type === 'ImportExpression') this.report(node, 'missing-global', 'there are no modules', kInclude);
  }

  isUse(node, ancestors) {
    const parent = ancestors[ancestors.length - 1];
    if (parent.type === 'MemberExpression' && parent.property === node && !parent.computed) return false;
    if (['Property', 'MethodDefinition', 'PropertyDefinition'].includes(parent.type) && parent.key === node && !parent.computed && !parent.shorthand) return false;
    return !['LabeledStatement', 'BreakStatement', 'ContinueStatement', 'MetaProperty'].includes(parent.type);
  }

  once(kind, name) {
    const key = `${kind} ${name}`;
    if (this.told.has(key)) return false;
    this.told.add(key);
    return true;
  }

  checkName(node, ancestors) {
    const { name } = node;
    if (this.program.isVisible(name, ancestors) || this.guards.has(name)) return;
    const parent = ancestors[ancestors.length - 1];
    if (name === 'morvik' && !(parent.type === 'MemberExpression' && parent.object === node) && parent.type !== 'VariableDeclarator') this.everything = true;
    if (this.api.isGlobal(name)) return this.checkGrant(node, name);
    if (name === 'console') return this.tellOnce(node, name, 'console', 'console says nothing to anybody', 'log(value) writes to the log.');
    if (Object.hasOwn(kInstead, name)) return this.tellOnce(node, name, 'missing-global', `there is no ${name}`, kInstead[name]);
    const onMorvik = this.api.objects.get(`morvik.${name}`);
    if (onMorvik) this.used.add(onMorvik.grant);
    if (onMorvik) return this.tellOnce(node, name, 'without-morvik', `there is no ${name} alone`, `It stands on morvik: morvik.${name}.`);
    if (kEngineNames.has(name) || name === 'undefined' || name === 'arguments') return;
    const known = [...this.program.names.keys(), ...this.api.globals];
    const other = nearest(name, known);
    this.tellOnce(node, name, 'not-defined', `nothing declares ${name}`, other === null ? 'Declare it with var, let or const.' : `Is ${other} meant?`);
  }

  tellOnce(node, name, kind, text, cure) {
    if (this.once(kind, name)) this.report(node, kind, text, cure);
  }

  checkPattern(node) {
    const object = this.program.pathOf(node.init);
    if (object === null || !this.api.objects.has(object)) return;
    for (const property of node.id.properties) {
      if (property.type === 'Property' && !property.computed) this.checkPath(property, object, property.key.name ?? String(property.key.value));
      else this.everything = true;
    }
  }

  checkMember(node, ancestors) {
    const object = this.program.pathOf(node.object);
    const name = propertyName(node);
    if (object === 'globalThis' && name !== null) return this.checkGrant(node, name);
    if (object === null || !this.api.objects.has(object)) return;
    if (name === null) {
      this.everything = true;
    } else if (!this.program.assignedMembers.has(`${object}.${name}`)) {
      this.checkPath(node, object, name);
    }
  }

  checkPath(node, object, name) {
    const path = `${object}.${name}`;
    if (this.api.has(path)) return this.checkGrant(node, path);
    if (this.guards.has(path) || name in Object.prototype) return;
    const names = this.api.membersOf(object);
    this.report(node, 'unknown-member', `${object} has no ${name}`, meant(name, names));
  }

  // Of each object that is not granted the first use is told: one line in descriptor.xml mends all.
  checkGrant(node, path) {
    const object = this.api.objects.get(path);
    if (!object || !object.grant) return;
    this.used.add(object.grant);
    if (this.everything || this.granted === null || this.granted.includes(object.grant) || this.guards.has(path)) return;
    this.tellOnce(node, path, 'not-granted', `${path} is not there: descriptor.xml does not grant it`, `Add <access>${object.grant}</access> to <accesses>.`);
  }
}
