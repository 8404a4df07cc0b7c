// What is expected against what is there: matching, and a difference that a person can read.

function isObject(value) {
  return typeof value === 'object' && value !== null;
}

// A pattern is a value; of objects, the members that it names count, and a regular expression stands
// for every text that it finds itself in.
function matches(actual, pattern) {
  if (pattern instanceof RegExp) return typeof actual === 'string' && found(pattern, actual);
  if (Array.isArray(pattern)) {
    return Array.isArray(actual) && actual.length === pattern.length &&
        pattern.every((one, index) => matches(actual[index], one));
  }
  if (!isObject(pattern)) return Object.is(actual, pattern);
  return isObject(actual) && Object.keys(pattern).every((name) => matches(actual[name], pattern[name]));
}

// One that remembers where it stopped would find another place each time.
function found(expression, text) {
  return new RegExp(expression.source, expression.flags.replace(/[gy]/g, '')).test(text);
}

function equals(actual, expected) {
  if (Object.is(actual, expected)) return true;
  if (!isObject(actual) || !isObject(expected)) return false;
  const names = Object.keys(actual);
  return Array.isArray(actual) === Array.isArray(expected) &&
      names.length === Object.keys(expected).length &&
      names.every((name) => Object.hasOwn(expected, name) && equals(actual[name], expected[name]));
}

// What a pattern speaks of.
function part(actual, pattern) {
  if (Array.isArray(pattern) && Array.isArray(actual)) {
    return actual.map((one, index) => index < pattern.length ? part(one, pattern[index]) : one);
  }
  if (!isObject(actual) || !isObject(pattern) || pattern instanceof RegExp) return actual;
  const named = {};
  for (const name of Object.keys(pattern)) {
    if (Object.hasOwn(actual, name)) named[name] = part(actual[name], pattern[name]);
  }
  return named;
}

// Without quotes where a text cannot be taken for anything else.
function shown(value) {
  const plain = (name, one) => one instanceof RegExp || typeof one === 'function' ||
      typeof one === 'bigint' || one === undefined ? String(one) : one;
  return value === undefined ? 'undefined' : JSON.stringify(value, plain, 2) || String(value);
}

// The common lines of two texts, as long as can be.
function commonLengths(left, right) {
  const lengths = Array.from({ length: left.length + 1 }, () => new Array(right.length + 1).fill(0));
  for (let i = left.length - 1; i >= 0; i--) {
    for (let j = right.length - 1; j >= 0; j--) {
      lengths[i][j] = left[i] === right[j] ? lengths[i + 1][j + 1] + 1 :
                                             Math.max(lengths[i + 1][j], lengths[i][j + 1]);
    }
  }
  return lengths;
}

// Lines with "-" are expected and not there, lines with "+" are there.
function difference(expected, actual) {
  const left = shown(expected).split('\n');
  const right = shown(actual).split('\n');
  const lengths = commonLengths(left, right);
  const lines = [];
  let i = 0;
  let j = 0;
  while (i < left.length || j < right.length) {
    if (i < left.length && j < right.length && left[i] === right[j]) {
      lines.push('  ' + left[i]);
      i++;
      j++;
    } else if (j >= right.length || (i < left.length && lengths[i + 1][j] >= lengths[i][j + 1])) {
      lines.push('- ' + left[i++]);
    } else {
      lines.push('+ ' + right[j++]);
    }
  }
  return lines.join('\n');
}
