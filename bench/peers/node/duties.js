// What MorvikVM does beside its messages, for an application on Node.js: the text of every message,
// and the same lines with the same levels to the system log. Node.js has no Unix datagram sockets of
// its own; the benchmark hands one over that is connected to the log daemon, and a write to it is a
// record. The names of numbers stand in a small table, since the message classes know none.
'use strict';
const fs = require('fs');
const {VReturnCode, InteractiveMode, ButtonCallback, RfidCallback} =
    require('./zeph-message').net.quelta.zeph.message;

const kLog = Number(process.env.BENCH_LOG_DESCRIPTOR);
const kDebug = '<143>';    // local1, debug
const kNotice = '<141>';   // local1, notice
const kWarning = '<140>';  // local1, warning
const kNames = {
  response: {code: VReturnCode},
  interactiveMode: {action: InteractiveMode.Action},
  buttonCallback: {type: ButtonCallback.Type},
  rfidCallback: {direction: RfidCallback.Dir, type: RfidCallback.Type, color: RfidCallback.Col},
};

// "Mmm dd hh:mm:ss", made once a second.
let second = 0;
let stamp = '';
function timeStamp() {
  const now = Date.now();
  if (Math.floor(now / 1000) !== second) {
    second = Math.floor(now / 1000);
    const [, month, day, , time] = new Date(now).toString().split(' ');
    stamp = `${month} ${String(Number(day)).padStart(2)} ${time}`;
  }
  return stamp;
}

function record(level, text) {
  fs.writeSync(kLog, `${level}${timeStamp()} MorvikVM[${process.pid}]: ${text}`);
}

function textOf(message, names = {}, indent = '') {
  let text = '';
  for (const name of Object.keys(message)) {
    const value = message[name];
    if (value === null) continue;
    if (typeof value === 'object')
      text += `${indent}${name} {\n${textOf(value, kNames[name], indent + '  ')}${indent}}\n`;
    else if (typeof value === 'string') text += `${indent}${name}: ${JSON.stringify(value)}\n`;
    else text += `${indent}${name}: ${names[name] ? names[name][value] : value}\n`;
  }
  return text;
}

const kPointer = '0x55e8a8e21320';  // as long as one; a script has none to tell

function debug(...texts) {
  for (const text of texts) record(kDebug, text);
}

function notice(...texts) {
  for (const text of texts) record(kNotice, text);
}

// Each is called where MorvikVM writes the same lines.
module.exports = {
  starting() {
    debug('running app: /applications/bench',
          'searching descriptor: /applications/bench/descriptor.xml', 'loading descriptor');
    notice('decriptor loaded');
    record(kWarning, 'no params loaded: No such file or directory');
    debug('loading source: /applications/bench/main.js');
    notice('running app: bench', 'JSLOG: started');
  },
  connecting(port) { debug(`connecting to: 127.0.0.1:${port}`); },
  askingToStart(id) {
    debug('starting interactiveMode', 'check arguments', `MorvikData: ${kPointer}`,
          `starting interactiveMode: ${id}`, `function pointer: ${kPointer}`);
  },
  granted() {
    debug('InteractiveCallback...', 'Response...', `MorvikData: ${kPointer}`,
          'calling interactiveMode function');
    notice('JSLOG: granted');
  },
  sending(message) { debug(`Sending MSG\n${textOf(message)}`); },
  received(message) { debug('message received', `Received MSG\n${textOf(message)}`); },
  answered() {
    debug('zephmsg callback handler', `function pointer: ${kPointer}`, `callback data: ${kPointer}`,
          `response: ${kPointer}`);
  },
  hearing(label) { debug(`Event: ${label}`, 'calling response function'); },
  pinging() { notice('PingFunction'); },
  lighting(color) { debug(`LED Light: color[${color}]`); },
  adding() { debug(`adding listener : [${kPointer}]`); },
  calling() { debug(`calling listener : [${kPointer}]`); },
  heardTag(id) { notice('RFID: RfidMsgCallback', `RFID: RfidMsgCallback : ${id}`); },
};
