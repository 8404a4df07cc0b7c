// The application on Node.js, with the text of every message and the host's lines in the log.
'use strict';
console.log('started');
const {start} = require('./device');
start(process.argv.slice(2), require('./duties'));
