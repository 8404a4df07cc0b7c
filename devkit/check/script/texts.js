// Words: the nearest of several, colours, and names of files.

/** How many letters have to change, come or go to make one word of the other. */
function distance(a, b) {
  let row = Array.from({ length: b.length + 1 }, (_, i) => i);
  for (let i = 1; i <= a.length; i++) {
    const next = [i];
    for (let j = 1; j <= b.length; j++) {
      const change = row[j - 1] + (a[i - 1] === b[j - 1] ? 0 : 1);
      next.push(Math.min(change, row[j] + 1, next[j - 1] + 1));
    }
    row = next;
  }
  return row[b.length];
}

/** The one of the names that somebody may have meant, or null. */
function nearest(word, names) {
  const most = Math.max(1, Math.floor(word.length / 3));
  let best = null;
  let least = most + 1;
  for (const name of names) {
    const far = distance(word.toLowerCase(), name.toLowerCase());
    if (far < least) [best, least] = [name, far];
  }
  return best;
}

function meant(word, names) {
  const name = nearest(word, names);
  return name === null ? `One of ${names.join(', ')}.` : `Is ${name} meant?`;
}

const kColorNames = new Set(('aliceblue antiquewhite aqua aquamarine azure beige bisque black blanchedalmond blue ' +
  'blueviolet brown burlywood cadetblue chartreuse chocolate coral cornflowerblue cornsilk crimson cyan darkblue ' +
  'darkcyan darkgoldenrod darkgray darkgreen darkgrey darkkhaki darkmagenta darkolivegreen darkorange darkorchid ' +
  'darkred darksalmon darkseagreen darkslateblue darkslategray darkslategrey darkturquoise darkviolet deeppink ' +
  'deepskyblue dimgray dimgrey dodgerblue firebrick floralwhite forestgreen fuchsia gainsboro ghostwhite gold ' +
  'goldenrod gray green greenyellow grey honeydew hotpink indianred indigo ivory khaki lavender lavenderblush ' +
  'lawngreen lemonchiffon lightblue lightcoral lightcyan lightgoldenrodyellow lightgray lightgreen lightgrey ' +
  'lightpink lightsalmon lightseagreen lightskyblue lightslategray lightslategrey lightsteelblue lightyellow lime ' +
  'limegreen linen magenta maroon mediumaquamarine mediumblue mediumorchid mediumpurple mediumseagreen ' +
  'mediumslateblue mediumspringgreen mediumturquoise mediumvioletred midnightblue mintcream mistyrose moccasin ' +
  'navajowhite navy oldlace olive olivedrab orange orangered orchid palegoldenrod palegreen paleturquoise ' +
  'palevioletred papayawhip peachpuff peru pink plum powderblue purple rebeccapurple red rosybrown royalblue ' +
  'saddlebrown salmon sandybrown seagreen seashell sienna silver skyblue slateblue slategray slategrey snow ' +
  'springgreen steelblue tan teal thistle tomato turquoise violet wheat white whitesmoke yellow yellowgreen')
  .split(' '));

function isColor(text) {
  const color = text.toLowerCase();
  return kColorNames.has(color) || /^#([0-9a-f]{3,4}|[0-9a-f]{6}|[0-9a-f]{8})$/.test(color) || /^(rgb|hsl)a?\([0-9 ,.%/]+\)$/.test(color);
}

/** What the host's filter has against a name, or null. */
function refusal(name) {
  if (name.includes('descriptor.xml')) return 'no script may use descriptor.xml';
  if (name.includes('..')) return 'no name may hold two dots in a row';
  const wrong = name.match(/[^A-Za-z0-9_\-/.]/);
  if (wrong === null) return null;
  return `no name may hold ${wrong[0] === ' ' ? 'a blank' : JSON.stringify(wrong[0])}`;
}

/** A name as it stands in the list of the folder's files. */
function plainName(name) {
  return name.split('/').filter((part) => part !== '' && part !== '.').join('/');
}
