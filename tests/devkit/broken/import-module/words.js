export var hello = 'hello';
