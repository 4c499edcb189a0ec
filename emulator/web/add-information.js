import { call, contact, element, Failure, filled, finish } from './page.js';
import { serveForm, showFailure, tool } from './page.js';
import { Verification } from './verification.js';

const verification = new Verification('supply', contact);

async function sessionToken() {
  const { token } = (await tool) || {};
  if (!token) throw new Failure('authErr');
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

verification.start();
serveForm(supply);
sessionToken().catch((failure) => {
  showFailure(failure);
  element('form').prepend(element('message'));
});
