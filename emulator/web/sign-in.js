import { call, clearMessage, element, filled, finish } from './page.js';
import { knownName, report, serveForm } from './page.js';
import { Verification } from './verification.js';

const loginType = 'VelqorPassPort';
const verification = new Verification('login', knownName);

function showWay() {
  const byCode = element('way-code').checked;
  element('by-password').hidden = byCode;
  element('by-code').hidden = !byCode;
  if (byCode && !verification.id) verification.start();
}

async function signIn() {
  const name = knownName();
  const record = element('way-code').checked
    ? await verification.callWithCode('/user/code-login', { loginType })
    : await call('POST', '/user/login', { ...name, password: filled('password'), loginType });
  const told = await finish('signed-in', { token: record.token, userId: record.user_id });
  if (told) report('close');
}

for (const id of ['way-password', 'way-code']) {
  element(id).addEventListener('change', () => {
    clearMessage();
    showWay();
  });
}
showWay();
serveForm(signIn);
