// SPDX-License-Identifier: MIT
// What programs have asked, and what they were answered.

import { button, cell, choice, copyable, copyButton, field, formatTime, make } from './console.js';
import { setText, Table, text } from './console.js';
import { act, call, serviceAddress } from './service.js';

const shownAtOnce = 100;
const keptAtMost = 1000;

let entries = []; // the newest first
let lastId = 0;
let paused = false;
let limit = shownAtOnce;

const isRefused = ({ httpStatus, word }) => httpStatus === 200 && word !== '';
const isFailed = ({ httpStatus }) => httpStatus >= 300;

const outcomes = {
  '': () => true,
  ok: (entry) => !isRefused(entry) && !isFailed(entry) && !entry.fault,
  refused: isRefused,
  failed: isFailed,
  fault: ({ fault }) => fault !== '',
};

// Then no row is to leave at the end for a new one.
function isBeingRead() {
  const open = list.table.querySelector('[aria-expanded=true]');
  return Boolean(open) || list.table.contains(document.activeElement);
}

// Everything after the entry before the last one: where the last one is missing, the log has been
// emptied meanwhile.
async function readLog() {
  let found = await call('GET', `requests?after=${Math.max(0, lastId - 1)}`);
  if (lastId > 0 && !(found[0] && found[0].id === lastId)) {
    entries = [];
    found = await call('GET', 'requests?after=0');
  } else {
    found = found.filter(({ id }) => id > lastId);
  }
  if (isBeingRead()) limit += found.length;
  entries = [...found.reverse(), ...entries].slice(0, keptAtMost);
  lastId = entries.length > 0 ? entries[0].id : 0;
}

function sizeText(bytes) {
  if (bytes < 1024) return `${bytes} B`;
  return `${(bytes / 1024).toFixed(1)} KB`;
}

function bodyText(body) {
  if (body === null) return '';
  return typeof body === 'string' ? body : JSON.stringify(body, null, 2);
}

const targetOf = ({ path, query }) => {
  const values = new URLSearchParams(query).toString();
  return encodeURI(path) + (values ? `?${values}` : '');
};

const quoted = (value) => `'${value.replace(/'/g, "'\\''")}'`;
const ofTheConnection = ['host', 'connection', 'content-length', 'accept-encoding', 'keep-alive'];

function curlLine(entry) {
  const parts = ['curl'];
  if (!(entry.method === 'GET' || (entry.method === 'POST' && entry.body !== null)))
    parts.push('-X', entry.method);
  for (const [name, value] of Object.entries(entry.headers))
    if (!ofTheConnection.includes(name.toLowerCase())) parts.push('-H', quoted(`${name}: ${value}`));
  if (entry.body !== null) {
    const { body } = entry;
    parts.push('--data-raw', quoted(typeof body === 'string' ? body : JSON.stringify(body)));
  }
  parts.push(quoted(window.location.origin + targetOf(entry)));
  return parts.join(' ');
}

function side(title, firstLine, headers, body) {
  const names = make('dl', { class: 'headers' });
  for (const [name, value] of Object.entries(headers))
    names.append(make('div', {}, make('dt', {}, name), make('dd', {}, value)));
  const written = bodyText(body);
  const content = written
    ? make('pre', { tabindex: '0', 'aria-label': text('request.body') }, written)
    : make('p', { class: 'faint' }, text('request.no-body'));
  const copy = written ? copyButton(() => written, text('request.copy-body')) : null;
  return make('section', {}, make('div', { class: 'heading' }, make('h3', {}, title), copy),
    make('p', { class: 'first-line' }, make('code', {}, firstLine)), names, content);
}

function detailsOf(entry) {
  const { method, headers, body, answer, httpStatus } = entry;
  const copy = copyButton(() => curlLine(entry), text('request.copy-curl'));
  copy.classList.remove('quiet');
  return make('div', { class: 'exchange' }, make('p', {}, copy),
    make('div', { class: 'sides' },
      side(text('request'), `${method} ${targetOf(entry)}`, headers, body),
      side(text('request.answer'), `HTTP ${httpStatus}`, answer.headers, answer.body)));
}

function makeRow(entry) {
  const { time, name, method, path, httpStatus, word, durationMs, bytes, fault } = entry;
  const opener = button(name || text('request.unknown'), null, { class: 'opener name' });
  const status = isFailed(entry) || isRefused(entry) ? 'chip bad' : 'chip good';
  const outcome = cell(make('span', { class: status }, `${httpStatus} ${word || ''}`.trim()));
  if (fault) outcome.append(make('span', { class: 'chip' }, text('request.fault', fault)));
  const row = {
    cells: [cell(opener, make('span', { class: 'under' }, `${method} ${path}`)), outcome,
      cell(text('request.ms', durationMs)), cell(sizeText(bytes)), cell(formatTime(time))],
    opener,
    details: () => detailsOf(entry),
    update: () => {},
  };
  return row;
}

const list = new Table(text('requests'), [
  [text('request'), 'grow'], [text('request.answer'), 'outcome'],
  [text('request.duration'), 'number wide'], [text('request.size'), 'number wide'],
  [text('request.time'), 'number'],
], (entry) => entry.id, makeRow);

const count = make('p', { class: 'lead', role: 'status' });
const more = button(text('requests.more'), () => {
  limit += shownAtOnce;
  show();
}, { class: 'small' });
const nothingFits = make('p', { class: 'empty', hidden: true }, text('requests.none-fits'));
const empty = make('div', { class: 'empty', hidden: true }, make('p', {}, text('requests.empty')),
  copyable(`passportctl --cloud ${serviceAddress} sign-in ada@example.com`, text('command')));
const outcome = choice(Object.keys(outcomes).map((key) => [key, text(`outcome.${key || 'all'}`)]));
const names = choice([['', text('requests.all')]]);
const pause = button(text('pause'), () => {
  paused = !paused;
  pause.setAttribute('aria-pressed', String(paused));
  act(() => {});
}, { class: 'small', 'aria-pressed': 'false' });
const clear = button(text('clear'), () =>
  act(() => call('DELETE', 'requests'), text('requests.cleared')), { class: 'small' });

function show() {
  const fits = outcomes[outcome.value];
  const found = entries.filter((entry) =>
    fits(entry) && (names.value === '' || entry.name === names.value));
  list.show(found.slice(0, limit));
  more.hidden = found.length <= limit;
  empty.hidden = entries.length > 0;
  nothingFits.hidden = found.length > 0 || entries.length === 0;
  clear.disabled = entries.length === 0;
  setText(count, text(paused ? 'requests.count.paused' : 'requests.count', found.length));
}

export const requests = {
  build(section, catalogue) {
    for (const name of catalogue.requests) names.append(new Option(name, name));
    for (const filter of [names, outcome]) filter.addEventListener('change', show);
    section.append(
      make('div', { class: 'heading' }, make('h2', {}, text('requests')), pause, clear),
      make('div', { class: 'filters' }, field(text('requests.name'), names),
        field(text('requests.outcome'), outcome), count),
      list.table, nothingFits, empty, more);
  },

  async refresh() {
    if (!paused) await readLog();
    show();
  },
};
