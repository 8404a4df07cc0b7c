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

function functionsAmong(nodes) {
  return nodes.filter((node) => kFunctions.has(node.type));
}

class Program {
  constructor(files) {
    this.files = files; // {name, tree}
    this.names = new Map(); // to {writes, value}
    this.scopes = new Map(); // a function, or null for the whole program, to the names that it declares
    this.assigned = []; // [name, functions around it]
    this.assignedMembers = new Set(); // texts of "a.b" that the program assigns
    for (const file of files) walk(file.tree, (node, ancestors) => this.takeNames(node, functionsAmong(ancestors)));
    this.declareAssigned();
  }

  write(name, value) {
    const known = this.names.get(name);
    if (known) known.writes++;
    else this.names.set(name, { writes: 1, value });
  }

  declare(name, value, scope) {
    if (!this.scopes.has(scope)) this.scopes.set(scope, new Set());
    this.scopes.get(scope).add(name);
    this.write(name, value);
  }

  /** What is assigned and nowhere declared becomes a global name. */
  declareAssigned() {
    const globals = this.assigned.filter(([name, around]) => !this.isVisible(name, around)).map(([name]) => name);
    for (const name of globals) this.declare(name, null, null);
  }

  /** The names of a pattern. `value` is what the whole pattern gets, as far as that is known. */
  takePattern(pattern, value, take) {
    if (pattern === null) return;
    if (pattern.type === 'Identifier') take(pattern.name, value);
    if (pattern.type === 'AssignmentPattern') this.takePattern(pattern.left, null, take);
    if (pattern.type === 'RestElement') this.takePattern(pattern.argument, null, take);
    if (pattern.type === 'ArrayPattern') pattern.elements.forEach((element) => this.takePattern(element, null, take));
    if (pattern.type !== 'ObjectPattern') return;
    for (const property of pattern.properties) {
      if (property.type === 'RestElement') this.takePattern(property.argument, null, take);
      else this.takePattern(property.value, value && !property.computed && { type: 'MemberExpression', object: value, property: property.key, computed: false }, take);
    }
  }

  // A name counts in the whole function that declares it, wherever in there it does.
  takeNames(node, around) {
    const scope = around[around.length - 1] ?? null;
    const declare = (name, value) => this.declare(name, value, scope);
    if (kFunctions.has(node.type)) this.takeFunction(node, scope);
    if (node.type.startsWith('Class') && node.id) declare(node.id.name, null);
    if (node.type === 'CatchClause') this.takePattern(node.param, null, declare);
    if (node.type === 'VariableDeclarator') this.takeDeclarator(node, declare);
    const assign = (name, value) => {
      this.assigned.push([name, around]);
      this.write(name, value);
    };
    if (node.type === 'AssignmentExpression') this.takeAssignment(node, assign);
    if (node.type === 'UpdateExpression') this.takePattern(node.argument, null, assign);
    if (node.type === 'ForInStatement' || node.type === 'ForOfStatement') this.takeLoop(node, assign);
  }

  takeFunction(node, scope) {
    if (node.id) this.declare(node.id.name, node, node.type === 'FunctionDeclaration' ? scope : node);
    node.params.forEach((parameter) => this.takePattern(parameter, null, (name) => this.declare(name, null, node)));
  }

  // Without a value it is written by whoever assigns to it.
  takeDeclarator(node, declare) {
    this.takePattern(node.id, node.init, declare);
    if (node.init === null && node.id.type === 'Identifier') this.names.get(node.id.name).writes++;
  }

  takeAssignment(node, assign) {
    if (node.left.type === 'MemberExpression') this.assignedMembers.add(this.pathOf(node.left));
    this.takePattern(node.left, node.operator === '=' ? node.right : null, assign);
  }

  takeLoop(node, assign) {
    if (node.left.type !== 'VariableDeclaration') this.takePattern(node.left, null, assign);
  }

  isOwn(name) {
    return this.names.has(name);
  }

  /** Whether something declares the name for a place within these nodes. */
  isVisible(name, ancestors) {
    const declares = (scope) => this.scopes.get(scope)?.has(name) ?? false;
    return declares(null) || functionsAmong(ancestors).some(declares);
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
