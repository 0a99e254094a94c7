// SPDX-License-Identifier: Apache-2.0
// Values that change while one looks.
//
//   <body data-live="/live">
//       where the events come from; without it nothing is done
//   <span data-live="KEY">
//       shows the text of KEY; has the class "changed" for a moment
//   <span data-live-when="KEY">
//       when it came
//   <span data-live-state="KEY">
//       its state, which also becomes a class: ok, warn or bad
//
// Events "value" and "status" tell {"key": "...", "text": "...", "when": "...", "state": "..."}; all but the key may be
// absent. The event "gone" says that values do not arrive for now, as does a broken connection.
"use strict";

(() => {
  const address = document.body.dataset.live;
  if (!address) return;

  const FLASH_MS = 1200;
  const FIRST_RETRY_MS = 2000;
  const LAST_RETRY_MS = 60000;
  const STATES = ["ok", "warn", "bad"];
  const INTERRUPTED = "Live values are interrupted";

  const texts = elementsByKey("live");
  const whens = elementsByKey("liveWhen");
  const states = elementsByKey("liveState");
  const flashes = new Map();
  const note = addNote();
  let source = null;
  let retryMs = FIRST_RETRY_MS;
  let retry = 0;

  // Key to elements; a key may be any text, so it is never part of a selector.
  function elementsByKey(name) {
    const found = new Map();
    const attribute = "data-" + name.replace(/[A-Z]/g, (letter) => "-" + letter.toLowerCase());
    for (const element of document.body.querySelectorAll("[" + attribute + "]")) {
      const key = element.dataset[name];
      found.set(key, [...(found.get(key) || []), element]);
    }
    return found;
  }

  // It is there before it says anything, or it would not be read aloud.
  function addNote() {
    const element = document.createElement("div");
    element.className = "live-note";
    element.setAttribute("role", "status");
    element.setAttribute("aria-live", "polite");
    const main = document.querySelector("main");
    document.body.insertBefore(element, main && main.parentNode === document.body ? main : document.body.firstChild);
    return element;
  }

  function setStale(stale) {
    document.body.classList.toggle("stale", stale);
    const text = stale ? INTERRUPTED : "";
    if (note.textContent !== text) note.textContent = text;
  }

  function flash(element) {
    clearTimeout(flashes.get(element));
    element.classList.add("changed");
    flashes.set(element, setTimeout(() => element.classList.remove("changed"), FLASH_MS));
  }

  function show(elements, text, onChange) {
    if (typeof text !== "string") return;
    for (const element of elements || []) {
      if (element.textContent === text) continue;
      element.textContent = text;
      if (onChange) onChange(element);
    }
  }

  // Null when it is no record.
  function parse(text) {
    try {
      const told = JSON.parse(text);
      if (typeof told === "object" && told !== null) return told;
    } catch (error) {
      // told below
    }
    console.error("live: no record: " + text);
    return null;
  }

  function take(event) {
    const told = parse(event.data);
    if (told === null) return;
    setStale(false);
    show(texts.get(told.key), told.text, flash);
    show(whens.get(told.key), told.when);
    show(states.get(told.key), told.state);
    if (typeof told.state !== "string") return;
    for (const element of states.get(told.key) || [])
      for (const state of STATES) element.classList.toggle(state, state === told.state);
  }

  function open() {
    close();
    source = new EventSource(address);
    source.addEventListener("open", () => {
      retryMs = FIRST_RETRY_MS;
      setStale(false);
    });
    source.addEventListener("value", take);
    source.addEventListener("status", take);
    source.addEventListener("gone", () => setStale(true));
    source.addEventListener("error", onError);
  }

  // A browser comes back by itself after a broken connection, but not after an answer that was none.
  function onError() {
    setStale(true);
    if (source.readyState !== EventSource.CLOSED) return;
    retry = setTimeout(open, retryMs);
    retryMs = Math.min(2 * retryMs, LAST_RETRY_MS);
  }

  function close() {
    clearTimeout(retry);
    if (source) source.close();
    source = null;
  }

  // A page that was left and is kept for the way back holds no connection meanwhile.
  addEventListener("pagehide", close);
  addEventListener("pageshow", (event) => {
    if (event.persisted) open();
  });
  open();
})();
