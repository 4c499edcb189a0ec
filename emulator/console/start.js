// SPDX-License-Identifier: MIT
// The tabs, what stands above each of them, and the state of the emulator once a second.

import { accounts } from './accounts.js';
import { copyable, formatLength, text } from './console.js';
import { faults, showInForce } from './faults.js';
import { inbox } from './inbox.js';
import { requests } from './requests.js';
import { call, onRefresh, refreshed, serviceAddress, setClock, Unreachable } from './service.js';
import { settings } from './settings.js';

const tabs = { accounts, inbox, requests, faults, settings };
const everyMs = 1000;
const element = (id) => document.getElementById(id);

const sectionOf = (name) => document.querySelector(`[data-tab=${name}]`);
const wanted = () => window.location.hash.slice(1);
let current = '';

function showTab() {
  const name = tabs[wanted()] ? wanted() : current || 'accounts';
  current = name;
  for (const other of Object.keys(tabs)) sectionOf(other).hidden = other !== name;
  for (const link of document.querySelectorAll('nav a')) {
    if (link.hash === `#${name}`) link.setAttribute('aria-current', 'page');
    else link.removeAttribute('aria-current');
  }
  document.title = `${text(name)} · passport-emulator`;
  window.scrollTo(0, 0);
  refreshed();
}

function showClock(clock) {
  setClock(clock);
  const ahead = element('clock-ahead');
  ahead.hidden = clock.aheadSeconds === 0;
  ahead.textContent = text('clock.ahead', formatLength(clock.aheadSeconds));
}

function showReach(reached) {
  const offline = element('offline');
  if (offline.hidden === reached) return;
  offline.hidden = reached;
  offline.textContent = reached ? '' : text('offline');
}

async function read() {
  const tab = tabs[current];
  try {
    const [inForce, clock] = await Promise.all([call('GET', 'faults'), call('GET', 'clock')]);
    showClock(clock);
    showInForce(inForce);
    await tab.refresh(inForce);
    showReach(true);
  } catch (error) {
    if (!(error instanceof Unreachable)) console.error(error);
    showReach(false);
  }
}

let running = null;
let timer = 0;

// One reading at a time; a click while one runs is followed by another.
async function readInTurn() {
  clearTimeout(timer);
  while (running) await running;
  running = read();
  await running;
  running = null;
  clearTimeout(timer);
  if (!document.hidden) timer = setTimeout(readInTurn, everyMs);
}

async function start() {
  element('address').append(copyable(serviceAddress, text('address')));
  document.querySelector('.skip').addEventListener('click', (event) => {
    event.preventDefault();
    element('main').focus();
  });
  element('language').addEventListener('click', ({ currentTarget }) => {
    currentTarget.hash = current;
  });
  let catalogue = null;
  while (!catalogue) {
    try {
      catalogue = await call('GET', 'catalogue');
    } catch (error) {
      showReach(false);
      await new Promise((resolve) => setTimeout(resolve, everyMs));
    }
  }
  for (const [name, tab] of Object.entries(tabs)) tab.build(sectionOf(name), catalogue);
  onRefresh(readInTurn);
  window.addEventListener('hashchange', showTab);
  document.addEventListener('visibilitychange', () => document.hidden || readInTurn());
  showTab();
}

start();
