// SPDX-License-Identifier: MIT
// What is to go wrong with the answers: switches for each request and kind, and what is on.

import { button, choice, field, make, setText, text } from './console.js';
import { act, call } from './service.js';

const order = ['word', 'httpStatus', 'delay', 'drop', 'halfBody', 'drip', 'malformed', 'notObject',
  'redirect'];
// What a field holds at first; those that are not named are empty.
const defaults = {
  'word.word': 'pwdErr',
  'httpStatus.code': 503,
  'delay.ms': 2000,
  'drip.bytesPerSecond': 20,
  'redirect.location': 'http://127.0.0.1:1/',
};
// Of any request the next may be one of a page that is being loaded.
const atFirst = 'userLogin';

let inForce = [];
const rows = [];

const requestName = (request) => (request === '*' ? text('faults.any') : request);
const requests = choice([['*', text('faults.any')]]);
const howOften = choice([['1', text('faults.once')], ['', text('faults.always')]]);
const words = make('datalist', { id: 'words' });
const problem = make('p', { class: 'wrong', role: 'alert' });

const endAll = () => act(() => call('DELETE', 'faults'), text('faults.ended'));
const end = ({ id }) => act(() => call('DELETE', `faults/${id}`), text('fault.ended'));

function parametersOf(fault) {
  const own = ['id', 'request', 'kind', 'times'];
  return Object.keys(fault).filter((name) => !own.includes(name)).map((name) => fault[name]);
}

function sentenceOf(fault) {
  const often = fault.times ? text('faults.times', fault.times) : text('faults.always');
  const what = [fault.kind, ...parametersOf(fault)].join(' ');
  return `${requestName(fault.request)}: ${what}, ${often}`;
}

// Above every tab: what is on, and the buttons that end it.
export function showInForce(found) {
  const banner = document.getElementById('in-force');
  if (JSON.stringify(found) === JSON.stringify(inForce)) return;
  inForce = found;
  const hadFocus = banner.contains(document.activeElement);
  banner.hidden = found.length === 0;
  const entries = found.map((fault) => {
    const name = `${text('end')}: ${sentenceOf(fault)}`;
    const properties = { class: 'small quiet', 'aria-label': name };
    return make('li', {}, make('code', {}, sentenceOf(fault)),
      button(text('end'), () => end(fault), properties));
  });
  banner.replaceChildren(
    make('p', { role: 'status' }, text('faults.count', found.length)),
    make('ul', {}, ...entries),
    button(text('faults.end-all'), endAll, { id: 'end-all', class: 'small danger' }));
  if (hadFocus && found.length > 0) document.getElementById('end-all').focus();
  else if (hadFocus) document.querySelector('nav [aria-current]').focus();
}

function control(kind, { name, type, minimum, maximum }) {
  const value = defaults[`${kind}.${name}`];
  const properties = type === 'number' ? { type: 'number', min: minimum, max: maximum } : {};
  const input = make('input', { ...properties, value: value === undefined ? '' : value });
  if (name === 'word') input.setAttribute('list', 'words');
  input.autocomplete = 'off';
  return input;
}

function describe(row) {
  const fault = { request: requests.value, kind: row.kind };
  for (const { name, type } of row.fields) {
    const { value } = row.inputs[name];
    if (value !== '') fault[name] = type === 'number' ? Number(value) : value;
  }
  if (howOften.value) fault.times = Number(howOften.value);
  return fault;
}

const isOn = ({ kind }) => (fault) => fault.kind === kind && fault.request === requests.value;

async function flip(row) {
  const on = inForce.filter(isOn(row));
  await act(async () => {
    problem.textContent = '';
    try {
      for (const fault of on) await call('DELETE', `faults/${fault.id}`);
      if (on.length === 0) await call('POST', 'faults', describe(row));
    } catch (error) {
      row.switch.closest('.kind').after(problem);
      problem.textContent = error.message;
    }
  });
}

function makeKind({ kind, fields }) {
  const row = { kind, fields, inputs: {} };
  const title = make('h3', { id: `kind-${kind}` }, text(`kind.${kind}`));
  row.switch = button('', () => flip(row), {
    role: 'switch', 'aria-checked': 'false', 'aria-labelledby': `kind-${kind}`,
  });
  const controls = make('div', { class: 'parameters' });
  for (const each of fields) {
    row.inputs[each.name] = control(kind, each);
    controls.append(field(text(`kind.${kind}.${each.name}`), row.inputs[each.name]));
  }
  row.node = make('div', { class: 'kind', 'data-kind': kind }, row.switch,
    make('div', { class: 'grow' }, title, make('p', { class: 'hint' }, text(`kind.${kind}.effect`)),
      controls));
  rows.push(row);
  return row.node;
}

function showSwitches() {
  for (const row of rows) {
    const on = inForce.find(isOn(row));
    setAttribute(row.switch, 'aria-checked', String(Boolean(on)));
    for (const [name, input] of Object.entries(row.inputs)) {
      input.disabled = Boolean(on);
      if (on) input.value = on[name] === undefined ? '' : on[name];
    }
  }
  for (const option of requests.options) {
    const on = inForce.some(({ request }) => request === option.value);
    const name = requestName(option.value);
    setText(option, on ? text('faults.on', name) : name);
  }
}

function setAttribute(node, name, value) {
  if (node.getAttribute(name) !== value) node.setAttribute(name, value);
}

export const faults = {
  build(section, catalogue) {
    for (const name of catalogue.requests) requests.append(new Option(name, name));
    requests.value = atFirst;
    for (const { word, en, zh } of catalogue.words) {
      const label = document.documentElement.lang === 'en' ? en : zh;
      words.append(make('option', { value: word }, label));
    }
    const place = ({ kind }) => order.indexOf(kind);
    const kinds = [...catalogue.faultKinds].sort((left, right) => place(left) - place(right));
    requests.addEventListener('change', showSwitches);
    section.append(
      make('div', { class: 'heading' }, make('h2', {}, text('faults'))),
      make('p', { class: 'lead' }, text('faults.lead')),
      make('div', { class: 'filters' }, field(text('faults.request'), requests),
        field(text('faults.often'), howOften)),
      make('div', { class: 'kinds' }, ...kinds.map(makeKind)), words);
  },

  refresh() {
    showSwitches();
  },
};
