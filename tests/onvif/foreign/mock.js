// The device inside the package onvif-mock, on 127.0.0.1: what it answers was recorded from a camera of 2014.
//
//     mock.js FOLDER PORT      FOLDER/node_modules has the packages; prints "mock: port N", ends with its standard input
//
// Three of its expressions want one client's way of writing XML. They are loosened to take any prefix, which may be declared
// anywhere.
const fs = require('fs');
const Module = require('module');
const path = require('path');

const [folder, port] = process.argv.slice(2);
const file = path.join(folder, 'node_modules', 'onvif-mock', 'test', 'serverMockup.coffee');
const loosened = {
  reBody: '/<(?:[\\w-]+:)?Body[^>]*>([\\s\\S]*)<\\/(?:[\\w-]+:)?Body>/',
  reCommand: '/<(?:[\\w-]+:)?(\\w+)/',
  reNS: '/xmlns(?::\\w+)?="http:\\/\\/www.onvif.org\\/\\S*\\/(\\S*)\\/wsdl"/',
};
let text = fs.readFileSync(file, 'utf8');
for (const [name, expression] of Object.entries(loosened)) {
  const whole = new RegExp(`^${name} = .*$`, 'm');
  if (!whole.test(text)) throw new Error(`${file} has no ${name}`);
  text = text.replace(whole, () => `${name} = ${expression}`);
}
const inBody = 'reNS.exec(body)';
if (!text.includes(inBody)) throw new Error(`${file} has no ${inBody}`);
text = text.replace(inBody, () => `${inBody} or new RegExp('xmlns:' + /<([\\w-]*)/.exec(body)[1] + ` +
  `'="http://www.onvif.org/\\\\S*?/(\\\\w*)/wsdl"').exec(request)`);
process.env.HOSTNAME = '127.0.0.1';
process.env.PORT = port;
const mock = new Module(file);
mock.filename = file;
mock.paths = Module._nodeModulePaths(path.dirname(file));
mock._compile(Module.createRequire(file)('coffeescript').compile(text, { bare: true }), file);
mock.exports.server.on('listening', () => console.log(`mock: port ${port}`));
process.stdin.on('end', () => process.exit(0)).resume();
