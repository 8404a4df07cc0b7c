// The device and the applications as the script of a test sees them. What happens to them is told by
// the runner, answer by answer; between two answers nothing happens.

const UNITS = { ms: 1, s: 1000, min: 60000, h: 3600000 };
const PATIENCE = '30 s'; // of the device's time, which costs nobody anything

let now = Date.parse('2026-01-01T12:00:00Z');
let view;
let apps = [];

// "10 s", "500 ms", "5 min", "1 h", or a number of milliseconds.
function milliseconds(duration) {
  if (typeof duration === 'number' && duration >= 0 && Number.isFinite(duration)) return duration;
  const parts = /^\s*(\d+(?:\.\d+)?)\s*(ms|s|min|h)\s*$/.exec(duration);
  if (!parts) {
    throw new Failure('a time is a number of milliseconds, or a text such as \'10 s\', \'500 ms\' ' +
                      'or \'5 min\', and not ' + shown(duration), placeOfCaller());
  }
  return Number(parts[1]) * UNITS[parts[2]];
}

// --- the runner

const asked = new Map(); // questions that wait for their answers
let lastId = 0;
let line = Promise.resolve();

function askNow(question) {
  return new Promise((resolve) => {
    lastId++;
    asked.set(lastId, resolve);
    send(JSON.stringify(Object.assign({ id: lastId }, question)));
  });
}

// One after the other, also where a script asks for several things at once.
function ask(question) {
  const answer = line.then(() => askNow(question)).then(hear);
  line = answer.catch(() => undefined);
  return answer;
}

function hear(answer) {
  if (answer.now !== undefined) now = answer.now;
  if (answer.view) view = answer.view;
  (answer.apps || []).forEach((state, index) => appAt(index).become(state));
  (answer.news || []).forEach((news) => appAt(news.app).hear(news));
  return answer;
}

// Does something and lets all follow from it that follows at once.
function act(question, place) {
  const actAndSettle = async () => {
    const answer = await ask(Object.assign({ place }, question));
    if (answer.trouble) throw new Failure(answer.trouble.trim(), place);
    await ask({ do: 'step', until: now, place });
    return answer;
  };
  return waiting(place, actAndSettle());
}

// --- what nobody may forget to wait for

const unfinished = new Map(); // promises, and where they were made

// One that fails and that nobody waits for is found by the engine.
function waiting(place, promise) {
  unfinished.set(promise, place);
  return promise.finally(() => unfinished.delete(promise));
}

// Lets time pass until `find` gives something. `what` is waited for, for a sentence.
async function untilFound(what, find, place, within, app, describe = () => ({})) {
  const patience = milliseconds(within === undefined ? PATIENCE : within);
  const end = Math.ceil(now + patience);
  for (;;) {
    const thing = find();
    if (thing !== undefined) return thing;
    const over = app && app.over();
    if (over || now >= end) {
      const reason = over || 'not within ' + duration(patience) + ' of the device\'s time';
      throw new Failure(what + ': ' + reason, place, describe());
    }
    await ask({ do: 'step', until: end, place });
  }
}

let begun = now; // when the test began

function duration(ms) {
  for (const [unit, length] of [['h', 3600000], ['min', 60000], ['s', 1000]]) {
    if (ms >= length) return Math.round(ms / length * 10) / 10 + ' ' + unit;
  }
  return Math.round(ms) + ' ms';
}

// --- applications

class App {
  constructor(index) {
    this.index = index;
    this.name = '';
    this.state = 'idle';
    this.lines = [];
    this.messages = [];
    this.faults = [];
    this.story = []; // what a person wants to read when a test fails
    this.ended = undefined;
    this.awaited = false; // its end
    this.next = { lines: 0, messages: 0, faults: 0 };
  }

  become(state) {
    this.name = state.name;
    this.state = state.state;
  }

  hear(news) {
    const tell = (kind, text) => this.story.push(this.name + ' ' + kind + ': ' + text);
    if (news.kind === 'log') {
      this.lines.push(news.text);
      tell('log', news.text);
    } else if (news.kind === 'message') {
      this.messages.push(news.message);
    } else if (news.kind === 'hint') {
      if (news.hint !== 'listener-ended') this.faults.push(news.text);
      tell('hint', news.text);
    } else if (news.kind === 'departure') {
      this.faults.push(news.text);
      tell('recording', news.text);
    } else if (news.kind === 'end') {
      this.ended = news.end;
      const lines = [news.end.headline, news.end.why, news.end.cure].filter((text) => text);
      tell('end', lines.join('\n  '));
    } else if (news.kind === 'trouble' || news.kind === 'note') {
      tell(news.kind, news.text);
    } else if (news.kind === 'launching') {
      this.ended = undefined;
      this.awaited = false;
    }
  }

  // Why nothing more is to be heard of it.
  over() {
    if (this.state === 'broken') return this.name + ' cannot be run as it is';
    return this.ended && this.ended.headline;
  }
}

function appAt(index) {
  while (apps.length <= index) apps.push(new App(apps.length));
  return apps[index];
}

// The next one of a list that fits; those before it count as seen.
function takeNext(app, list, fits) {
  for (let at = app.next[list]; at < app[list].length; at++) {
    if (!fits(app[list][at])) continue;
    app.next[list] = at + 1;
    return app[list][at];
  }
  return undefined;
}

function hasText(pattern) {
  return (text) => pattern === undefined ||
      (pattern instanceof RegExp ? found(pattern, text) : text.includes(pattern));
}

function waitInList(app, list, what, fits, options, describe) {
  const place = placeOfCaller();
  const find = () => takeNext(app, list, fits);
  return waiting(place, untilFound(app.name + ' ' + what, find, place, options.within, app, describe));
}

// What a test gets for an application.
function appForTest(app) {
  return Object.freeze({
    get name() { return app.name; },
    get lines() { return app.lines.slice(); },
    get state() { return app.state; },
    logs: (pattern, options = {}) =>
        waitInList(app, 'lines', 'logs ' + shown(pattern), hasText(pattern), options),
    sends: (pattern, options = {}) => waitInList(
        app, 'messages', 'sends what is expected', (message) => matches(message, pattern), options,
        () => ({ difference: difference(pattern, nearest(app.messages, pattern)) })),
    throws: (pattern, options = {}) =>
        waitInList(app, 'faults', 'throws ' + shown(pattern), hasText(pattern), options),
    interactive: (options = {}) => {
      const place = placeOfCaller();
      const find = () => app.state === 'interactive' || undefined;
      return waiting(place, untilFound(app.name + ' becomes interactive', find, place,
                                       options.within, app)).then(() => undefined);
    },
    ends: (kind, options = {}) => waiting(placeOfCaller(), end(app, kind, placeOfCaller(), options)),
    launch: (type = 'plain') => act({ do: 'launch', app: app.index, type }, placeOfCaller()).then(() => undefined),
    read: (file) => act({ do: 'read', file }, placeOfCaller()).then((answer) => answer.text)
  });
}

// Of what was sent, what is most like a pattern: the last one with a member that it names.
function nearest(messages, pattern) {
  const like = messages.filter((message) => Object.keys(pattern).some((name) => name in message));
  return like.length > 0 ? part(like[like.length - 1], pattern) : undefined;
}

async function end(app, kind, place, options) {
  const isOver = () => app.state === 'ended' && app.ended || undefined;
  const ended = await untilFound(app.name + ' ends', isOver, place, options.within);
  app.awaited = true;
  if (kind !== undefined && ended.kind !== kind) {
    throw new Failure(app.name + ' ended by ' + ended.kind + ' and not by ' + kind, place,
                      { difference: difference(kind, ended.kind) });
  }
  return ended;
}

// --- the device

// Words in the order of the table, and behind them an object with those that have names.
function argumentsOf(stimulus, words, place) {
  const given = {};
  const last = words[words.length - 1];
  const names = isObject(last) && !Array.isArray(last) ? words.pop() : {};
  if (words.length > stimulus.arguments.length) {
    throw new Failure(stimulus.name + ' takes no ' + shown(words[stimulus.arguments.length]) +
                      '. Usage: ' + stimulus.name + ' ' + stimulus.usage, place);
  }
  words.forEach((word, index) => { given[stimulus.arguments[index].name] = word; });
  return Object.assign(given, names);
}

function stimuliFor(table, app) {
  const functions = {};
  for (const stimulus of table.filter((one) => one.group !== 'help')) {
    functions[stimulus.name] = (...words) => {
      const place = placeOfCaller();
      const request = { stimulus: stimulus.name, arguments: argumentsOf(stimulus, words, place) };
      if (app) request.app = app.index;
      return act({ do: 'stimulus', request }, place).then(() => undefined);
    };
  }
  return functions;
}

const deviceOfTest = {};

function fillDevice(table, handles) {
  Object.assign(deviceOfTest, stimuliFor(table), {
    for: (handle) => stimuliFor(table, appAt(Math.max(0, handles.indexOf(handle)))),
    view: () => act({ do: 'nothing' }, placeOfCaller()).then(() => view)
  });
}

// --- time

const time = Object.freeze({
  now: () => now,
  pass: (length) => {
    const place = placeOfCaller();
    const end = Math.ceil(now + milliseconds(length));
    const pass = async () => {
      do await ask({ do: 'step', until: end, place }); while (now < end);
    };
    return waiting(place, pass());
  }
});

// The clock of the device, in the place of the machine's.
function moveDate(Real) {
  function Moved(...parts) {
    if (!new.target) return new Real(now).toString();
    return Reflect.construct(Real, parts.length > 0 ? parts : [now], new.target);
  }
  Moved.prototype = Real.prototype;
  Moved.prototype.constructor = Moved;
  return Object.assign(Moved, { now: () => now, parse: Real.parse, UTC: Real.UTC });
}
