// The application on Node.js from a startup snapshot: everything is loaded before it is taken.
'use strict';
const {startupSnapshot} = require('v8');
const {start} = require('./device');
startupSnapshot.setDeserializeMainFunction(function() {
  console.log('started');
  start(process.argv.slice(2));
});
