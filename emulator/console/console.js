// SPDX-License-Identifier: MIT
// What the tabs share: elements and texts, tables that change in place, copying, dialogs.

const sentences = new Map();
for (const { dataset, textContent } of document.getElementById('texts').content.children)
  sentences.set(dataset.key, textContent);

export const language = document.documentElement.lang;

// A text of texts.tsv, with the values in place of %1, %2 and so on.
export function text(key, ...values) {
  const found = sentences.get(key) || key;
  return found.replace(/%(\d)/g, (_, number) => values[number - 1]);
}

export const hasText = (key) => sentences.has(key);

// An element. Properties are attributes, but for `on`, which are listeners by event; those that are
// false or null are left out.
export function make(tag, properties = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name === 'on') {
      for (const [event, listener] of Object.entries(value)) node.addEventListener(event, listener);
    } else if (value !== false && value !== null && value !== undefined) {
      node.setAttribute(name, value === true ? '' : value);
    }
  }
  node.append(...children.filter((child) => child !== null));
  return node;
}

export function button(label, listener, properties = {}) {
  return make('button', { type: 'button', on: { click: listener }, ...properties }, label);
}

let lastId = 0;

export function field(label, control, hint = '') {
  lastId += 1;
  const id = `field-${lastId}`;
  control.id = id;
  if (hint) control.setAttribute('aria-describedby', `${id}-hint`);
  const note = hint ? make('p', { class: 'hint', id: `${id}-hint` }, hint) : null;
  return make('div', { class: 'field' }, make('label', { for: id }, label), control, note);
}

export function choice(options, chosen) {
  const select = make('select');
  for (const [value, label] of options) select.append(new Option(label, value));
  if (chosen !== undefined) select.value = chosen;
  return select;
}

// Leaves a text that is the same alone, so that what a person has marked in it stays marked.
export function setText(node, value) {
  if (node.textContent !== value) node.textContent = value;
}

// The screen reader's rows and cells survive a layout of blocks on narrow screens by their roles.
export function cell(...children) {
  return make('td', { role: 'cell' }, ...children);
}

// A table whose rows follow a list; columns are [text, class]. Each item is a tbody of its own.
export class Table {
  constructor(label, columns, keyOf, makeRow) {
    const heads = columns.map(([title, kind]) =>
      make('th', { scope: 'col', role: 'columnheader', class: kind }, title));
    const head = make('tr', { role: 'row' }, ...heads);
    const group = make('thead', { role: 'rowgroup' }, head);
    this.table = make('table', { role: 'table', 'aria-label': label }, group);
    this.columns = columns;
    this.keyOf = keyOf;
    this.makeRow = makeRow;
    this.rows = new Map();
  }

  // Rows that stay are neither moved nor made anew: they keep the focus and what is open in them.
  show(items) {
    const keys = new Set(items.map(this.keyOf));
    for (const [key, row] of this.rows) {
      if (keys.has(key)) continue;
      const hadFocus = row.body.contains(document.activeElement);
      row.body.remove();
      if (hadFocus) (this.table.querySelector('button') || document.getElementById('main')).focus();
      this.rows.delete(key);
    }
    let place = this.table.tHead.nextSibling;
    for (const item of items) {
      const row = this.rowOf(item);
      if (row.body === place) place = place.nextSibling;
      else this.table.insertBefore(row.body, place);
      row.update(item);
    }
    this.table.hidden = items.length === 0;
  }

  rowOf(item) {
    const key = this.keyOf(item);
    if (!this.rows.has(key)) {
      const row = this.makeRow(item);
      row.cells.forEach((node, index) => {
        node.className = `${node.className} ${this.columns[index][1] || ''}`.trim();
      });
      const main = make('tr', { role: 'row' }, ...row.cells);
      row.body = make('tbody', { role: 'rowgroup' }, main);
      if (row.details) openable(row, main, this.columns.length);
      this.rows.set(key, row);
    }
    return this.rows.get(key);
  }
}

// A row that opens below itself to what row.details returns, by the button in its first cell or a
// click anywhere on it.
function openable(row, main, columns) {
  let opened = null;
  const opener = row.opener;
  const toggle = () => {
    if (opened) opened.remove();
    const content = opened ? null : cell(row.details());
    if (content) content.colSpan = columns;
    opened = content && make('tr', { role: 'row', class: 'details' }, content);
    if (opened) main.after(opened);
    opener.setAttribute('aria-expanded', String(Boolean(opened)));
    if (row.opened) row.opened(Boolean(opened));
  };
  opener.setAttribute('aria-expanded', 'false');
  opener.addEventListener('click', toggle);
  main.classList.add('openable');
  main.addEventListener('click', ({ target }) => {
    const marksText = String(window.getSelection()).length > 0;
    if (!target.closest('button, a, code') && !marksText) toggle();
  });
}

let noticeTimer = 0;

// Says something in passing, to the eye and to a screen reader.
export function say(sentence) {
  const notice = document.getElementById('notice');
  notice.textContent = sentence;
  clearTimeout(noticeTimer);
  noticeTimer = setTimeout(() => (notice.textContent = ''), 3000);
}

// An engine may refuse the clipboard to a page; the older way asks nobody.
async function putOnClipboard(value) {
  try {
    await navigator.clipboard.writeText(value);
  } catch (error) {
    const area = make('textarea', { class: 'unseen', 'aria-hidden': 'true' });
    const focused = document.activeElement;
    (focused.closest('dialog') || document.body).append(area);
    area.value = value;
    area.select();
    const copied = document.execCommand('copy');
    area.remove();
    focused.focus();
    if (!copied) throw error;
  }
}

export function copyButton(valueOf, label = text('copy'), name = null) {
  const copy = button(label, async () => {
    try {
      await putOnClipboard(valueOf());
      say(text('copied'));
      copy.textContent = text('copied');
      setTimeout(() => (copy.textContent = label), 1500);
    } catch (error) {
      say(text('copy.failed'));
    }
  }, { class: 'small quiet', 'aria-label': name });
  return copy;
}

export function copyable(value, name) {
  const copy = copyButton(() => value, text('copy'), `${text('copy')}: ${name}`);
  return make('span', { class: 'copyable' }, make('code', {}, value), copy);
}

// A modal dialog; resolves when it is closed. `close` takes what it resolves to.
export function showDialog(title, build) {
  return new Promise((resolve) => {
    const heading = make('h2', { id: 'dialog-title' }, title);
    const dialog = make('dialog', { 'aria-labelledby': 'dialog-title' }, heading);
    let result = null;
    const close = (value) => {
      result = value;
      dialog.close();
    };
    dialog.append(build(close));
    dialog.addEventListener('close', () => {
      dialog.remove();
      resolve(result);
    });
    document.body.append(dialog);
    const focused = document.activeElement;
    dialog.addEventListener('close', () => focused.isConnected && focused.focus());
    dialog.showModal();
  });
}

// Whether a person wants what cannot be undone.
export function confirmed(question, action) {
  return showDialog(question, (close) => make('div', { class: 'buttons' },
    button(action, () => close(true), { class: 'danger' }),
    button(text('cancel'), () => close(false), { class: 'quiet', autofocus: true })));
}

export const formatTime = (iso) => new Date(iso).toLocaleTimeString(language, { hour12: false });
export const formatDate = (iso) => new Date(iso).toLocaleString(language, { hour12: false });

const units = [['day', 86400], ['hour', 3600], ['minute', 60], ['second', 1]];
const relative = new Intl.RelativeTimeFormat(language, { style: 'short' });

// "5 min. ago", or "in 5 min." for a number of seconds to come.
export function formatAge(seconds) {
  const size = Math.abs(seconds);
  const [unit, length] = units.find(([, each]) => size >= each) || ['second', 1];
  return relative.format(-Math.trunc(seconds / length), unit);
}

export function formatLength(seconds) {
  const parts = [];
  let rest = seconds;
  for (const [unit, length] of units) {
    const count = Math.floor(rest / length);
    rest -= count * length;
    const style = { style: 'unit', unit, unitDisplay: 'short' };
    if (count > 0) parts.push(new Intl.NumberFormat(language, style).format(count));
  }
  return parts.slice(0, 2).join(' ');
}
