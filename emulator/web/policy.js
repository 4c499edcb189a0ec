// SPDX-License-Identifier: MIT
// The privacy policy over the form, so that nothing typed there is lost.

import { pageAt } from './language.js';
import { element } from './page.js';

async function showPolicy(address) {
  const policy = (await pageAt(address)).querySelector('main');
  const dialog = element('policy');
  element('policy-text').replaceChildren(...policy.childNodes);
  dialog.showModal();
  dialog.scrollTop = 0;
}

element('policy-close').addEventListener('click', () => element('policy').close());
document.querySelector('.to-privacy').addEventListener('click', (event) => {
  const modified = event.ctrlKey || event.metaKey || event.shiftKey;
  if (modified || !element('policy').showModal) return;
  event.preventDefault();
  const address = event.currentTarget.href;
  showPolicy(address).catch(() => location.assign(address));
});
