// SPDX-License-Identifier: MIT
// Another language without another page, so that what was typed, chosen and sent stays.

const attributes = ['alt', 'aria-label', 'data-text', 'href', 'hreflang', 'lang'];

// The texts of a page in the order of its source, which is one for all languages: for each a
// function that reads it and one that sets it.
function textsOf(root) {
  const found = [];
  const walker = document.createTreeWalker(root, NodeFilter.SHOW_ELEMENT | NodeFilter.SHOW_TEXT);
  for (let node = root; node; node = walker.nextNode()) {
    if (node.nodeType === Node.TEXT_NODE && node.data.trim()) found.push(textNode(node));
    if (node instanceof HTMLTemplateElement) found.push(...textsOf(node.content));
    for (const name of attributes)
      if (node.getAttribute && node.getAttribute(name)) found.push(attribute(node, name));
  }
  return found;
}

const textNode = (node) => ({ read: () => node.data, set: (text) => (node.data = text) });
const attribute = (node, name) => ({
  read: () => node.getAttribute(name),
  set: (text) => node.setAttribute(name, text),
});

const texts = textsOf(document.documentElement); // before a script has added any

export async function pageAt(address) {
  const response = await fetch(address);
  if (!response.ok) throw new Error(`HTTP ${response.status}`);
  return new DOMParser().parseFromString(await response.text(), 'text/html');
}

async function changeLanguage(address) {
  const others = textsOf((await pageAt(address)).documentElement);
  if (others.length !== texts.length) throw new Error('the pages differ');
  texts.forEach((text, index) => text.set(others[index].read()));
  history.replaceState(null, '', address);
  document.dispatchEvent(new Event('languagechanged'));
}

document.querySelector('header a').addEventListener('click', (event) => {
  if (event.ctrlKey || event.metaKey || event.shiftKey) return;
  event.preventDefault();
  const address = event.currentTarget.href;
  changeLanguage(address).catch(() => location.assign(address));
});
