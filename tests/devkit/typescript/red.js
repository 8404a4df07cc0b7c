// Prints what an editor shows red in these folders, by their jsconfig.json, a line for each mistake:
// "folder/main.js:3: TS2345: text". Runs in the shell beside it; the words are the TypeScript
// compiler, and then for each folder its path and, each after a ":", its scripts and typings.
load(words[0]);

const libraryFolder = words[0].replace(/[^/]*$/, '');

// The same for all folders, and most of the work.
const libraries = new Map();

function parse(file, target) {
  const text = read(file);
  return text === undefined ? undefined : ts.createSourceFile(file, text, target);
}

function sourceFile(file, target) {
  if (!file.startsWith(libraryFolder)) return parse(file, target);
  if (!libraries.has(file)) libraries.set(file, parse(file, target));
  return libraries.get(file);
}

function hostFor(folder) {
  return {
    getSourceFile: sourceFile,
    readFile: read,
    fileExists: (file) => read(file) !== undefined,
    getDefaultLibFileName: (options) => libraryFolder + ts.getDefaultLibFileName(options),
    getDefaultLibLocation: () => libraryFolder,
    getCurrentDirectory: () => folder,
    getCanonicalFileName: (file) => file,
    useCaseSensitiveFileNames: () => true,
    getNewLine: () => '\n',
    writeFile: () => undefined
  };
}

// TypeScript looks for a jsconfig.json's files itself; here they are given.
function optionsOf(folder) {
  const config = ts.parseConfigFileTextToJson('jsconfig.json', read(folder + '/jsconfig.json'));
  if (config.error) throw new Error(folder + ': ' + config.error.messageText);
  const { options, errors } = ts.convertCompilerOptionsFromJson(
      config.config.compilerOptions, folder, 'jsconfig.json');
  if (errors.length > 0) throw new Error(folder + ': ' + errors[0].messageText);
  return Object.assign({}, options, { noEmit: true });
}

function show(diagnostic) {
  const text = ts.flattenDiagnosticMessageText(diagnostic.messageText, ' ');
  const { file, start, code } = diagnostic;
  const place = file ? file.fileName.split('/').slice(-2).join('/') + ':' +
      (file.getLineAndCharacterOfPosition(start).line + 1) : 'options';
  print(`${place}: TS${code}: ${text}`);
}

function check(word) {
  const [folder, ...files] = word.split(':');
  const names = files.map((file) => folder + '/' + file);
  const program = ts.createProgram(names, optionsOf(folder), hostFor(folder));
  ts.getPreEmitDiagnostics(program).forEach(show);
}

words.slice(1).forEach(check);
