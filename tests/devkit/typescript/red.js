// Prints what an editor shows red in these folders, by their jsconfig.json, a line for each mistake:
// "folder/main.js:3: TS2345: text". The first argument is the TypeScript compiler.
const path = require('path');
const ts = require(process.argv[2]);

// The same for all folders, and most of the work.
const libraries = new Map();

function hostFor(options) {
  const host = ts.createCompilerHost(options);
  const read = host.getSourceFile.bind(host);
  host.getSourceFile = (file, ...rest) => {
    if (!path.basename(file).startsWith('lib.')) return read(file, ...rest);
    if (!libraries.has(file)) libraries.set(file, read(file, ...rest));
    return libraries.get(file);
  };
  return host;
}

function show(folder, diagnostic) {
  const text = ts.flattenDiagnosticMessageText(diagnostic.messageText, ' ');
  const at = diagnostic.file ? diagnostic.file.getLineAndCharacterOfPosition(diagnostic.start) : { line: 0 };
  const name = diagnostic.file ? path.basename(diagnostic.file.fileName) : 'jsconfig.json';
  console.log(`${path.basename(folder)}/${name}:${at.line + 1}: TS${diagnostic.code}: ${text}`);
}

function check(folder) {
  const file = path.join(folder, 'jsconfig.json');
  const config = ts.getParsedCommandLineOfConfigFile(file, { noEmit: true }, Object.assign({}, ts.sys, {
    onUnRecoverableConfigFileDiagnostic: (diagnostic) => show(folder, diagnostic)
  }));
  const program = ts.createProgram(config.fileNames, config.options, hostFor(config.options));
  const found = [...config.errors, ...ts.getPreEmitDiagnostics(program)];
  found.forEach((diagnostic) => show(folder, diagnostic));
}

process.argv.slice(3).forEach(check);
