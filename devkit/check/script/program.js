// An application's scripts as trees: what is declared, which member of the script API an expression
// is, and what kind of value it has. Names count for the whole program, wherever they are declared:
// where that is too simple nothing is said of a name.

const kFunctions = new Set(['FunctionDeclaration', 'FunctionExpression', 'ArrowFunctionExpression']);

/**
 * Calls visit(node, ancestors) for each node below and with this one, from the outside. What is
 * below a node for which it gives false is left out. `ancestors` is valid during the call.
 */
function walk(node, visit, ancestors = []) {
  if (visit(node, ancestors) === false) return;
  ancestors.push(node);
  for (const key in node) {
    const value = node[key];
    if (value === null || typeof value !== 'object' || key === 'loc') continue;
    if (Array.isArray(value)) {
      for (const child of value) if (child !== null && typeof child.type === 'string') walk(child, visit, ancestors);
    } else if (typeof value.type === 'string') {
      walk(value, visit, ancestors);
    }
  }
  ancestors.pop();
}

function propertyName(node) {
  if (!node.computed) return node.property.name ?? null;
  return node.property.type === 'Literal' ? String(node.property.value) : null;
}

class Program {
  constructor(files) {
    this.files = files; // {name, tree}
    this.names = new Map(); // to {writes, value}
    this.assignedMembers = new Set(); // texts of "a.b" that the program assigns
    for (const file of files) walk(file.tree, (node) => this.takeNames(node));
  }

  write(name, value) {
    const known = this.names.get(name);
    if (known) known.writes++;
    else this.names.set(name, { writes: 1, value });
  }

  /** The names of a pattern. `value` is what the whole pattern gets, as far as that is known. */
  takePattern(pattern, value) {
    if (pattern === null) return;
    if (pattern.type === 'Identifier') this.write(pattern.name, value);
    if (pattern.type === 'AssignmentPattern') this.takePattern(pattern.left, null);
    if (pattern.type === 'RestElement') this.takePattern(pattern.argument, null);
    if (pattern.type === 'ArrayPattern') pattern.elements.forEach((element) => this.takePattern(element, null));
    if (pattern.type !== 'ObjectPattern') return;
    for (const property of pattern.properties) {
      if (property.type === 'RestElement') this.takePattern(property.argument, null);
      else this.takePattern(property.value, value && !property.computed && { type: 'MemberExpression', object: value, property: property.key, computed: false });
    }
  }

  takeNames(node) {
    if (kFunctions.has(node.type)) {
      if (node.id) this.write(node.id.name, node);
      node.params.forEach((parameter) => this.takePattern(parameter, null));
    }
    if (node.type.startsWith('Class') && node.id) this.write(node.id.name, null);
    if (node.type === 'CatchClause') this.takePattern(node.param, null);
    if (node.type === 'VariableDeclarator') this.takeDeclarator(node);
    if (node.type === 'AssignmentExpression') this.takeAssignment(node);
    if (node.type === 'UpdateExpression') this.takePattern(node.argument, null);
    if (node.type === 'ForInStatement' || node.type === 'ForOfStatement') this.takeLoop(node);
  }

  takeDeclarator(node) {
    // Without a value it is written by whoever assigns to it.
    if (node.init !== null || !this.names.has(node.id.name)) this.takePattern(node.id, node.init);
    if (node.init === null && node.id.type === 'Identifier') this.names.get(node.id.name).writes++;
  }

  takeAssignment(node) {
    if (node.left.type === 'MemberExpression') this.assignedMembers.add(this.pathOf(node.left));
    this.takePattern(node.left, node.operator === '=' ? node.right : null);
  }

  takeLoop(node) {
    if (node.left.type !== 'VariableDeclaration') this.takePattern(node.left, null);
    else node.left.declarations.forEach((one) => this.names.get(one.id.name) && this.names.get(one.id.name).writes++);
  }

  isOwn(name) {
    return this.names.has(name);
  }

  /** What a name of the program's stands for when that never changes, or null. */
  only(name) {
    const known = this.names.get(name);
    return known && known.writes === 1 ? known.value : null;
  }

  /** "morvik.led.light" for an expression that is this member of a global object, or null. */
  pathOf(node, depth = 0) {
    if (node === null || node === undefined || depth > 20) return null;
    if (node.type === 'ChainExpression') return this.pathOf(node.expression, depth + 1);
    if (node.type === 'Identifier') {
      if (this.isOwn(node.name)) return this.pathOf(this.only(node.name), depth + 1);
      return node.name;
    }
    if (node.type !== 'MemberExpression') return null;
    const object = this.pathOf(node.object, depth + 1);
    const name = propertyName(node);
    if (object === null || name === null) return null;
    return object === 'globalThis' ? name : `${object}.${name}`;
  }

  /** The node that says what a value is, through names that stand for one thing alone. */
  source(node, depth = 0) {
    if (node === null || node === undefined || depth > 20) return null;
    if (node.type !== 'Identifier' || !this.isOwn(node.name)) return node;
    return this.source(this.only(node.name), depth + 1);
  }

  /** {value} when it is known before the program runs, or null. */
  constant(node) {
    const from = this.source(node);
    if (from === null) return null;
    if (from.type === 'Literal' && !from.regex) return { value: from.value };
    if (from.type === 'TemplateLiteral' && from.expressions.length === 0) return { value: from.quasis[0].value.cooked };
    if (from.type !== 'UnaryExpression' || from.operator !== '-') return null;
    const positive = this.constant(from.argument);
    return positive && typeof positive.value === 'number' ? { value: -positive.value } : null;
  }

  /** The function that a value is, or null. */
  functionOf(node) {
    const from = this.source(node);
    return from !== null && kFunctions.has(from.type) ? from : null;
  }

  /** 'function', 'number', 'string', 'boolean', 'object', 'null', 'undefined' or 'unknown'. */
  kindOf(node, api, depth = 0) {
    const from = this.source(node);
    if (from === null || depth > 20) return 'unknown';
    const known = this.constant(from);
    if (known !== null) return known.value === null ? 'null' : typeof known.value;
    const again = (one) => this.kindOf(one, api, depth + 1);
    switch (from.type) {
      case 'FunctionDeclaration':
      case 'FunctionExpression':
      case 'ArrowFunctionExpression':
        return 'function';
      case 'ObjectExpression':
      case 'ArrayExpression':
        return 'object';
      case 'TemplateLiteral':
        return 'string';
      case 'Identifier':
        return from.name === 'undefined' ? 'undefined' : this.kindOfPath(from, api);
      case 'BinaryExpression':
        if (from.operator === '+') return again(from.left) === 'string' || again(from.right) === 'string' ? 'string' : 'unknown';
        return '- * / %'.split(' ').includes(from.operator) ? 'number' : 'unknown';
      case 'LogicalExpression':
        return again(from.left) === again(from.right) ? again(from.left) : 'unknown';
      case 'ConditionalExpression':
        return again(from.consequent) === again(from.alternate) ? again(from.consequent) : 'unknown';
      case 'CallExpression':
        return this.kindOfCall(from, api);
      case 'MemberExpression':
        return from.computed && this.isSplit(from.object) ? 'string' : this.kindOfPath(from, api);
      default:
        return 'unknown';
    }
  }

  isSplit(node) {
    const from = this.source(node);
    return from !== null && from.type === 'CallExpression' && from.callee.type === 'MemberExpression' && propertyName(from.callee) === 'split';
  }

  kindOfPath(node, api) {
    const path = this.pathOf(node);
    if (api.functions.has(path)) return 'function';
    if (api.objects.has(path)) return 'object';
    return api.values.get(path) === 'string' ? 'string' : 'unknown';
  }

  kindOfCall(call, api) {
    const path = this.pathOf(call.callee);
    if (path === 'Number' || path === 'parseInt' || path === 'parseFloat' || path === 'Date.now') return 'number';
    if (path === 'String' || path === 'JSON.stringify') return 'string';
    if (path !== null && path.startsWith('Math.')) return 'number';
    if (api.functions.has(path)) return { string: 'string', number: 'number' }[api.functions.get(path).returns] ?? 'unknown';
    const name = call.callee.type === 'MemberExpression' ? propertyName(call.callee) : null;
    const texts = ['substring', 'substr', 'trim', 'toLowerCase', 'toUpperCase', 'charAt', 'join', 'toString'];
    if (texts.includes(name)) return 'string';
    return name === 'split' ? 'object' : 'unknown';
  }
}
