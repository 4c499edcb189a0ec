// SPDX-License-Identifier: MIT
// What programs have asked, and what they were answered.

import { button, cell, choice, copyable, copyButton, field, formatTime, make } from './console.js';
import { setText, Table, text } from './console.js';
import { act, call, refreshed, serviceAddress } from './service.js';

const rowsOfPage = 200;
const rowsAtMost = 1000; // while a person reads in one of them
const keptBytes = { headers: '8 KiB', body: '64 KiB' };

let entries = []; // those of the page, the newest first
let before = 0; // a page of older ones: those before this id; 0: the newest, as they come
let older = false; // there are some before the page
let stale = true; // the page is to be read anew
let paused = false;

const isRefused = ({ httpStatus, word }) => httpStatus === 200 && word !== '';
const isFailed = ({ httpStatus }) => httpStatus >= 300;
const outcomes = ['', 'ok', 'refused', 'failed', 'fault'];

// Then no row is to leave at the end for a new one.
function isBeingRead() {
  const open = list.table.querySelector('[aria-expanded=true]');
  return Boolean(open) || list.table.contains(document.activeElement);
}

function ask(range) {
  const values = { limit: rowsOfPage, name: names.value, outcome: outcome.value, ...range };
  return call('GET', `requests?${new URLSearchParams(values)}`);
}

const oldestId = () => (entries.length > 0 ? entries[entries.length - 1].id : 0);

async function readPage() {
  stale = false; // before the answer, as a filter may change meanwhile
  try {
    entries = (await ask(before ? { before } : {})).reverse();
    if (before && entries.length === 0) { // dropped meanwhile
      before = 0;
      entries = (await ask({})).reverse();
    }
  } catch (error) {
    stale = true;
    throw error;
  }
}

// Everything after the entry before the last one: where the last one is missing, the log has been
// emptied meanwhile. More than a page of new ones takes the place of what nobody reads.
async function readNew() {
  const last = entries.length > 0 ? entries[0].id : 0;
  const found = last ? await ask({ after: last - 1 }) : [];
  const overrun = found.length === rowsOfPage && !isBeingRead();
  if (found.length === 0 || found[0].id !== last || overrun) {
    await readPage();
    return;
  }
  entries = [...found.slice(1).reverse(), ...entries]
    .slice(0, isBeingRead() ? rowsAtMost : rowsOfPage);
}

async function readLog() {
  const oldest = stale ? -1 : oldestId();
  if (stale) await readPage();
  else if (before === 0) await readNew();
  if (oldestId() === oldest) return;
  older = oldestId() > 0 && (await ask({ before: oldestId(), limit: 1 })).length > 0;
}

// Another page, or the same one by another filter.
function turnTo(id) {
  before = id;
  stale = true;
  return refreshed();
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

// What is told of a part of which only the beginning is kept.
const cutNote = (isCut, part) =>
  isCut ? make('p', { class: 'faint' }, text(`request.cut.${part}`, keptBytes[part])) : null;

function side(title, firstLine, { headers, headersCut, body, bodyCut }) {
  const values = make('dl', { class: 'headers' });
  for (const [name, value] of Object.entries(headers))
    values.append(make('div', {}, make('dt', {}, name), make('dd', {}, value)));
  const written = bodyText(body);
  const content = written
    ? make('pre', { tabindex: '0', 'aria-label': text('request.body') }, written)
    : make('p', { class: 'faint' }, text('request.no-body'));
  const copy = written ? copyButton(() => written, text('request.copy-body')) : null;
  return make('section', {}, make('div', { class: 'heading' }, make('h3', {}, title), copy),
    make('p', { class: 'first-line' }, make('code', {}, firstLine)), values,
    cutNote(headersCut, 'headers'), content, cutNote(bodyCut, 'body'));
}

// Without a command for what cannot be sent again as it was.
function detailsOf(entry) {
  const { method, headersCut, bodyCut, answer, httpStatus } = entry;
  const copy = copyButton(() => curlLine(entry), text('request.copy-curl'));
  copy.classList.remove('quiet');
  return make('div', { class: 'exchange' },
    headersCut || bodyCut ? null : make('p', {}, copy),
    make('div', { class: 'sides' },
      side(text('request'), `${method} ${targetOf(entry)}`, entry),
      side(text('request.answer'), `HTTP ${httpStatus}`, answer)));
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
// By a button below the page, which may be gone afterwards.
async function leaf(id) {
  await turnTo(id);
  document.getElementById('main').focus();
  window.scrollTo(0, 0);
}

const more = button(text('requests.more'), () => leaf(oldestId()), { class: 'small' });
const newest = button(text('requests.newest'), () => leaf(0), { class: 'small' });
const bounds = make('p', { class: 'faint' }, text('requests.bounds', rowsOfPage));
const pages = make('p', { class: 'buttons' }, newest, more);
const nothingFits = make('p', { class: 'empty', hidden: true }, text('requests.none-fits'));
const empty = make('div', { class: 'empty', hidden: true }, make('p', {}, text('requests.empty')),
  copyable(`passportctl --cloud ${serviceAddress} sign-in ada@example.com`, text('command')));
const outcome = choice(outcomes.map((key) => [key, text(`outcome.${key || 'all'}`)]));
const names = choice([['', text('requests.all')]]);
const pause = button(text('pause'), () => {
  paused = !paused;
  pause.setAttribute('aria-pressed', String(paused));
  act(() => {});
}, { class: 'small', 'aria-pressed': 'false' });
const clear = button(text('clear'), () =>
  act(async () => {
    await call('DELETE', 'requests');
    before = 0;
    stale = true;
  }, text('requests.cleared')), { class: 'small' });

function countText() {
  if (before) return text('requests.count.older', entries.length);
  return text(paused ? 'requests.count.paused' : 'requests.count', entries.length);
}

function show() {
  const filtered = names.value !== '' || outcome.value !== '';
  list.show(entries);
  more.hidden = !older;
  newest.hidden = before === 0;
  bounds.hidden = more.hidden && newest.hidden;
  empty.hidden = entries.length > 0 || filtered;
  nothingFits.hidden = entries.length > 0 || !filtered;
  clear.disabled = entries.length === 0 && !filtered;
  setText(count, countText());
}

export const requests = {
  build(section, catalogue) {
    for (const name of catalogue.requests) names.append(new Option(name, name));
    for (const filter of [names, outcome]) filter.addEventListener('change', () => turnTo(0));
    section.append(
      make('div', { class: 'heading' }, make('h2', {}, text('requests')), pause, clear),
      make('div', { class: 'filters' }, field(text('requests.name'), names),
        field(text('requests.outcome'), outcome), count),
      list.table, nothingFits, empty, bounds, pages);
  },

  async refresh() {
    if (stale || !paused) await readLog();
    show();
  },
};
