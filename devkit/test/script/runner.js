// Collects the tests of a file, runs the one that is asked for, and tells how it went.

const tests = [];

function test(name, options, body) {
  const place = placeOfCaller();
  if (typeof options === 'function') [options, body] = [{}, options];
  if (typeof name !== 'string' || typeof body !== 'function') {
    throw new Failure('a test is test(name, function), or test(name, {...}, function)', place);
  }
  tests.push({ name, options: options || {}, body, place });
}

const OPTIONS = ['launch', 'instance', 'applications', 'at', 'files', 'replay'];

function planOf(test) {
  const options = test.options;
  const unknown = Object.keys(options).find((name) => !OPTIONS.includes(name));
  if (unknown) {
    throw new Failure('there is no option ' + unknown + ': ' + OPTIONS.join(', '), test.place);
  }
  const at = options.at === undefined ? now : Date.parse(options.at);
  if (Number.isNaN(at)) throw new Failure('at: ' + options.at + ' is no time', test.place);
  const launches = options.applications || [options];
  return {
    do: 'begin', at, files: options.files || {}, replay: options.replay || null, place: test.place,
    types: launches.map((one) => launchTypeOf(one.launch)),
    instances: launches.map((one) => one.instance || 'DEVICE')
  };
}

// Null for one that is launched later.
function launchTypeOf(launch) {
  if (launch === false) return null;
  return typeof launch === 'string' ? launch : 'plain';
}

async function runTest(one, stimuli) {
  const plan = planOf(one);
  begun = now = plan.at;
  await act(plan, one.place);
  const handles = apps.map(appForTest);
  fillDevice(stimuli, handles);
  await one.body({ device: deviceOfTest, app: handles[0], apps: handles, time });
  const lost = takeUnhandled();
  if (lost.length > 0) throw lost[0];
  if (unfinished.size > 0) {
    const place = unfinished.values().next().value;
    throw new Failure('this was not waited for: write await in front of it', place);
  }
  await act({ do: 'nothing' }, one.place);
  apps.forEach((app) => expectNoFault(app, one.place));
}

// What nobody asked for is a fault: an end that is not the script's own, and an exception.
function expectNoFault(app, place) {
  if (app.state === 'broken') throw new Failure(app.over(), place);
  if (app.ended && !app.awaited && app.ended.kind !== 'script-exit') {
    throw new Failure(app.ended.headline + ', and the test did not expect it: await app.ends()', place);
  }
  const fault = app.faults[app.next.faults];
  if (fault !== undefined) {
    throw new Failure('the application failed, and the test did not expect it: ' + fault, place);
  }
}

function failureOf(error, place) {
  const message = isObject(error) && 'message' in error ?
      (error instanceof Failure ? '' : error.name + ': ') + error.message : 'thrown: ' + shown(error);
  return {
    message, place: placeOf(error) || place, difference: error && error.difference,
    story: apps.flatMap((app) => app.story.slice(-20))
  };
}

async function runAndTell(one, stimuli) {
  let failure = null;
  try {
    await runTest(one, stimuli);
  } catch (error) {
    failure = failureOf(error, one.place);
  }
  send(JSON.stringify({ do: 'done', failure, now, begun }));
}

function receive(text) {
  const message = JSON.parse(text);
  if (message.do === 'run') return void runAndTell(tests[message.test], message.stimuli);
  const resolve = asked.get(message.id);
  asked.delete(message.id);
  resolve(message);
}

function tellTests(error) {
  if (error === undefined) {
    send(JSON.stringify({ do: 'loaded', tests: tests.map(({ name, place }) => ({ name, place })) }));
  } else {
    send(JSON.stringify({ do: 'broken', failure: failureOf(error) }));
  }
}

function log(...values) {
  const text = values.map((value) => typeof value === 'string' ? value : shown(value)).join(' ');
  send(JSON.stringify({ do: 'comment', text }));
}

Object.assign(globalThis, { test, expect, time, log, console: { log }, Date: moveDate(Date) });
