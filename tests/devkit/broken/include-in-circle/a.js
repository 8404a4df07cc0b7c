include('b.js');
var hello = 'hello';
