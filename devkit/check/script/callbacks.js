// What happens in a function that the host calls: whether a listener stays, words that it never
// hears, and objects that it keeps.

class Callbacks {
  constructor(program, api, report) {
    Object.assign(this, { program, api, report });
  }

  check(node, path, callback) {
    const called = this.program.functionOf(node);
    if (called === null) return;
    if (callback.stays && path !== 'setTimeout') this.checkStays(called, path);
    callback.hears.forEach((value, i) => {
      const parameter = called.params[i];
      if (parameter && parameter.type === 'Identifier') this.checkHeard(called, parameter.name, value.type);
    });
  }

  /** The object of morvik.serial.addListener__. */
  checkObject(node, path) {
    const object = this.program.source(node);
    if (object === null || object.type !== 'ObjectExpression') return;
    const property = object.properties.find((one) => one.type === 'Property' && (one.key.name ?? one.key.value) === 'onMessage');
    if (!property && !object.properties.some((one) => one.type === 'SpreadElement')) {
      this.report(node, 'listener-ends', `the object of ${path} has no function onMessage`, 'onMessage: function (self, port, data) { ...; return true; }');
    }
    const called = property ? this.program.functionOf(property.value) : null;
    if (called !== null) this.checkStays(called, path);
  }

  checkStays(called, path) {
    if (called.async || called.generator) return this.tellEnds(called, path, 'gives a promise or an iterator');
    if (called.body.type !== 'BlockStatement') return this.checkResult(called, called.body, path);
    const results = this.resultsOf(called);
    if (results.some((result) => this.mayBeTrue(result.argument))) return;
    const shown = results.find((result) => result.argument !== null);
    if (shown) this.checkResult(shown, shown.argument, path);
    else this.tellEnds(called, path, 'returns nothing');
  }

  resultsOf(called) {
    const results = [];
    walk(called.body, (node) => {
      if (node.type === 'ReturnStatement') results.push(node);
      return !kFunctions.has(node.type);
    });
    return results;
  }

  mayBeTrue(node) {
    if (node === null) return false;
    const known = this.program.constant(node);
    return known !== null ? known.value === true : ['boolean', 'unknown'].includes(this.program.kindOf(node, this.api));
  }

  checkResult(place, result, path) {
    if (result.type === 'CallExpression' && this.api.functions.has(this.program.pathOf(result.callee))) {
      return this.tellEnds(place, path, 'gives what a command returns, which is nothing');
    }
    if (!this.mayBeTrue(result)) this.tellEnds(place, path, 'does not return exactly true');
  }

  tellEnds(place, path, reason) {
    this.report(place, 'listener-ends', `this listener of ${path} ${reason}, so it hears one event and is gone`, 'Let it end with: return true;');
  }

  checkHeard(called, name, type) {
    const own = this.namesIn(called);
    walk(called.body, (node) => {
      if (kFunctions.has(node.type) && node.params.some((one) => one.name === name)) return false;
      if (node.type === 'BinaryExpression' && /^[!=]==?$/.test(node.operator)) this.checkComparison(node, name, type);
      if (node.type === 'SwitchStatement') node.cases.forEach((one) => one.test && this.compare(node.discriminant, one.test, name, type));
      if (node.type === 'AssignmentExpression') this.checkKept(node.right, node.left, own, name, type);
      if (node.type === 'CallExpression' && node.callee.type === 'MemberExpression' && propertyName(node.callee) === 'push') {
        node.arguments.forEach((argument) => this.checkKept(argument, node.callee, own, name, type));
      }
      return true;
    });
  }

  checkComparison(node, name, type) {
    this.compare(node.left, node.right, name, type);
    this.compare(node.right, node.left, name, type);
  }

  // "press" has the parameter's type, "tag.color" that of a field of its shape.
  typeOf(node, name, type) {
    if (node.type === 'Identifier' && node.name === name) return type;
    if (node.type !== 'MemberExpression' || node.object.type !== 'Identifier' || node.object.name !== name) return null;
    const fields = this.api.shapes.get(type)?.fields ?? [];
    return fields.find((field) => field.name === propertyName(node))?.type ?? null;
  }

  compare(side, other, name, type) {
    const names = this.api.types.get(this.typeOf(side, name, type))?.names;
    const known = this.program.constant(other);
    if (!names || known === null || typeof known.value !== 'string' || names.includes(known.value)) return;
    this.report(other, 'unknown-name', `${name} is never ${JSON.stringify(known.value)} here`, meant(known.value, names));
  }

  // What a function declares goes with it.
  namesIn(called) {
    const names = new Set();
    walk(called.body, (node) => {
      if (node.type === 'VariableDeclarator' && node.id.type === 'Identifier') names.add(node.id.name);
    });
    return names;
  }

  // What outlives the function holds the whole context of the object.
  checkKept(value, place, own, name, type) {
    let root = place;
    while (root.type === 'MemberExpression') root = root.object;
    if (root.type === 'Identifier' && (own.has(root.name) || root.name === name)) return;
    if (value.type !== 'Identifier' || value.name !== name) return;
    if (!this.api.shapes.has(type.replace('[]', '')) && !type.startsWith('{')) return;
    this.report(place, 'kept-object', `${name} is kept, and holds some 160 KB for as long as it is`, `Keep a copy: Object.assign({}, ${name}), or its texts.`);
  }
}
