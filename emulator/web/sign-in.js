// SPDX-License-Identifier: MIT
import { awaited, filled, finish, knownName, serveForm } from './form.js';
import { call, clearMessage, element, report } from './page.js';
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
  const byCode = element('way-code').checked;
  const password = byCode ? '' : filled('password');
  const record = byCode
    ? await verification.callWithCode('/user/code-login', { loginType })
    : await call('POST', '/user/login', { ...name, password, loginType });
  // An application that waits for an account signs in by itself, with the password.
  const { username: userName, phoneArea } = name;
  const told = awaited === 'account' && password
    ? await finish('account', { userName, password, phoneArea })
    : await finish('signed-in', { token: record.token, userId: record.user_id });
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
