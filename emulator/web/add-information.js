// SPDX-License-Identifier: MIT
import { contact, filled, finish, serveForm } from './form.js';
import { call, element, Failure, showFailure, tool } from './page.js';
import { Verification } from './verification.js';

const verification = new Verification('supply', contact);

async function sessionToken() {
  const { token } = (await tool) || {};
  if (!token) throw new Failure('page.noSession');
  return token;
}

async function supply() {
  const token = await sessionToken();
  const company = {
    companyName: filled('company-name'),
    companyType: filled('company-type'),
    companyPurpose: filled('company-purpose'),
  };
  if (element('username').value.trim())
    await verification.callWithCode('/user/supply', company, token);
  else await call('POST', '/user/supply', company, token);
  await finish('supplied');
}

async function start() {
  try {
    await sessionToken();
    element('fields').hidden = false;
    verification.start();
  } catch (failure) {
    element('submit').hidden = true;
    showFailure(failure);
  }
  serveForm(supply);
}

start();
