// SPDX-License-Identifier: MIT
import { finish, knownName, newPassword, serveForm } from './form.js';
import { Verification } from './verification.js';

const verification = new Verification('bpwd', knownName);

async function setPassword() {
  const { username, phoneArea } = knownName();
  const password = newPassword();
  await verification.callWithCode('/user/reset-password', { password });
  await finish('account', { userName: username, password, phoneArea });
}

verification.start();
serveForm(setPassword);
