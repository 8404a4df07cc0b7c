// The application that every contestant runs, word for word. The device is what the contestant gives
// it: ping and light send a request, with a function for the answer or without one; onButton and
// onTag hear events.
//
// The server learns from a blue light that the application listens. What a task has to say later, it
// says with a light too, so that nothing but messages is ever measured.
'use strict';

function nothing() {}

// An awaited answer each, and no answer will come.
function fillWithRequests(device, count) {
  for (let i = 0; i < count; ++i) device.light('red', nothing);
}

// A light at every `count`th call.
function lightEvery(device, count) {
  let calls = 0;
  return function() {
    if (++calls % count === 0) device.light('red');
    return true;
  };
}

const tasks = {
  idle: function(device) { device.light('blue'); },

  // The next request as soon as the last one is answered.
  ping: function(device) {
    function next() { device.ping(next); }
    next();
  },

  button: function(device, count) {
    device.onButton(lightEvery(device, count));
    device.light('blue');
  },

  tags: function(device, count) {
    const heard = lightEvery(device, count);
    device.onTag(function(tag) { return tag.id.length > 0 && heard(); });
    device.light('blue');
  },

  // So many requests each time the button is pressed.
  led: function(device, count) {
    device.onButton(function() {
      for (let i = 0; i < count; ++i) device.light('red');
      return true;
    });
    device.light('blue');
  },

  // The same with a function for each answer, and no answer comes.
  awaited: function(device, count) {
    device.onButton(function() {
      fillWithRequests(device, count);
      return true;
    });
    device.light('blue');
  },

  // The one that is measured comes behind many others.
  listeners: function(device, count, others) {
    for (let i = 0; i < others; ++i) device.onButton(function() { return true; });
    tasks.button(device, count);
  },
  timers: function(device, count, others) {
    for (let i = 0; i < others; ++i) device.after(nothing);
    tasks.ping(device);
  },
};

function runTask(device, task, count, others) {
  if (task === 'ping' || task === 'led') fillWithRequests(device, others);
  tasks[task](device, count, others);
}

if (typeof module !== 'undefined') module.exports = {runTask};
