// The application on Node.js: node main.js PORT TASK COUNT OTHERS.
'use strict';
console.log('started');
const {start} = require('./device');
start(process.argv.slice(2));
