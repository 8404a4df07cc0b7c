// Messages in the wire format, as far as the application needs them: what it sends and what it hears.
// Fields that are in no table here are passed over.
/* exported frameOf, lightBody, modeBody, decodeMessage, kPing, kLed, kMode */
'use strict';

var kLed = 102;
var kMode = 201;
var kPing = 1000;
const kBytes = 2;  // the wire's kind of a field with a length; all others here are numbers
const decoder = new TextDecoder();
const encoder = new TextEncoder();

function putNumber(out, value) {
  while (value > 127) {
    out.push(value & 127 | 128);
    value >>>= 7;
  }
  out.push(value);
}

function putBytes(out, field, bytes) {
  putNumber(out, field << 3 | kBytes);
  putNumber(out, bytes.length);
  for (const byte of bytes) out.push(byte);
}

function putText(out, field, text) { putBytes(out, field, encoder.encode(text)); }

// led { light { color } }
function lightBody(color) {
  const light = [];
  putText(light, 1, color);
  const led = [];
  putBytes(led, 4, light);
  return led;
}

// interactiveMode { action: START interactiveId }
function modeBody(id) {
  const mode = [1 << 3, 1];
  putText(mode, 2, id);
  return mode;
}

// A message with its length in four bytes in front.
function frameOf(id, interactiveId, payload, body) {
  const message = [];
  putText(message, 1, id);
  if (interactiveId) putText(message, 3, interactiveId);
  putBytes(message, payload, body);
  const frame = new Uint8Array(4 + message.length);
  new DataView(frame.buffer).setUint32(0, message.length);
  frame.set(message, 4);
  return frame;
}

class Reader {
  constructor(bytes) {
    this.bytes = bytes;
    this.at = 0;
  }
  number() {
    let value = 0, shift = 0, byte;
    do {
      byte = this.bytes[this.at++];
      value |= (byte & 127) << shift;
      shift += 7;
    } while (byte > 127);
    return value;
  }
  piece() {
    const length = this.number();
    this.at += length;
    return this.bytes.subarray(this.at - length, this.at);
  }
}

// An object with the fields of a table: a number to the name, and how to read the value.
function decode(bytes, fields) {
  const reader = new Reader(bytes);
  const object = {};
  while (reader.at < bytes.length) {
    const tag = reader.number();
    const value = (tag & 7) === kBytes ? reader.piece() : reader.number();
    const field = fields[tag >>> 3];
    if (field) object[field[0]] = field[1](value);
  }
  return object;
}

const asText = (bytes) => decoder.decode(bytes);
const nameIn = (names) => (number) => names[number];
const as = (fields) => (bytes) => decode(bytes, fields);

const kCodes = [, 'OK', 'ERROR', 'TIMEOUT', 'TERMINATED', 'CANCELLED', 'BUSY', 'BAD_INTERACTIVEID',
  'SCHEDULE_EVENT', 'NOT_CONNECTED'];
const kPresses = [, 'SIMPLE', 'DOUBLE', 'TRIPLE', 'MULTIPLE', 'LONG_START', 'LONG_STOP'];
const kDirections = [, 'IN', 'OUT'];
const kTypes = ['NONE_TYPE', 'FLAT', 'MINIVORT', 'VORTAS', 'DRESS', 'VOLUMZ'];
const kColors = ['NONE_COL', 'RED', 'BLUE', 'GREEN', 'YELLOW', 'PINK', 'BLACK', 'GREY', 'ORANGE', 'PURPLE',
  'WHITE', 'DARK_RED', 'DARK_BLUE', 'DARK_GREEN', 'DARK_YELLOW', , 'BROWN'];

const kMessage = {
  1: ['id', asText],
  2: ['correlationId', asText],
  200: ['response', as({1: ['code', nameIn(kCodes)]})],
  301: ['buttonCallback', as({1: ['type', nameIn(kPresses)]})],
  303: ['rfidCallback', as({
    1: ['id', asText],
    3: ['direction', nameIn(kDirections)],
    5: ['type', nameIn(kTypes)],
    7: ['color', nameIn(kColors)],
  })],
};

function decodeMessage(bytes) { return decode(bytes, kMessage); }
