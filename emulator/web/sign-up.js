// SPDX-License-Identifier: MIT
import { contact, finish, newPassword, serveForm } from './form.js';
import { Verification } from './verification.js';

const verification = new Verification('register', contact);

async function signUp() {
  const { username, phoneArea } = contact();
  const password = newPassword();
  await verification.callWithCode('/user/register', { password });
  await finish('account', { userName: username, password, phoneArea });
}

verification.start();
serveForm(signUp);
