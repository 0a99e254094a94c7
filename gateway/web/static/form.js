// SPDX-License-Identifier: Apache-2.0
// Forms that help while one fills them in.
//
//   <button data-confirm="Remove it?">
//       asks before the form is sent
//   <input type="password">
//       gets a button that shows what was typed
//   <textarea data-lint="/..." data-lint-into="ID">
//       the element ID shows what the gateway says of the text: the form's fields are asked about there while one types,
//       as a query without hidden and secret ones; the answer is plain text
"use strict";

(() => {
  const TYPING_MS = 300;

  // Also a form that is sent by the enter key has a button that sends it.
  document.addEventListener("submit", (event) => {
    const question = event.submitter && event.submitter.dataset.confirm;
    if (question && !confirm(question)) event.preventDefault();
  });

  // ---- passwords

  function addReveal(field) {
    const box = document.createElement("span");
    const button = document.createElement("button");
    box.className = "password";
    button.type = "button";
    const show = (shown) => {
      field.type = shown ? "text" : "password";
      button.textContent = shown ? "Hide" : "Show";
      button.setAttribute("aria-label", shown ? "Hide the password" : "Show the password");
      button.setAttribute("aria-pressed", String(shown));
    };
    button.addEventListener("click", () => show(field.type === "password"));
    // Browsers keep what stands in text fields.
    if (field.form) field.form.addEventListener("submit", () => show(false));
    const focused = document.activeElement === field;
    field.replaceWith(box);
    box.append(field, button);
    show(false);
    if (focused) field.focus();
  }

  // ---- verdicts

  // What is hidden or secret does not belong into an address.
  function fieldsOf(form) {
    const fields = new URLSearchParams();
    for (const [name, value] of new FormData(form)) {
      const field = form.elements.namedItem(name);
      const secret = field instanceof Element && (field.type === "hidden" || field.closest(".password") !== null);
      if (typeof value === "string" && !secret) fields.append(name, value);
    }
    return fields;
  }

  async function verdictOf(field, signal) {
    const fields = field.form ? fieldsOf(field.form) : new URLSearchParams({[field.name]: field.value});
    const answer = await fetch(field.dataset.lint + "?" + fields, {headers: {Accept: "text/plain"}, signal});
    if (!(answer.headers.get("Content-Type") || "").startsWith("text/plain"))
      return answer.ok ? "" : "There is no verdict: the gateway answered " + answer.status + ".";
    return answer.text();
  }

  function addLint(field) {
    const into = document.getElementById(field.dataset.lintInto);
    if (!into) return;
    into.setAttribute("aria-live", "polite");
    let typing = 0;
    let asking = null;
    const ask = async () => {
      if (asking) asking.abort();
      asking = new AbortController();
      try {
        into.textContent = await verdictOf(field, asking.signal);
      } catch (error) {
        if (error.name !== "AbortError") into.textContent = "There is no verdict: the gateway does not answer.";
      }
    };
    field.addEventListener("input", () => {
      clearTimeout(typing);
      typing = setTimeout(ask, TYPING_MS);
    });
  }

  document.querySelectorAll("input[type=password]").forEach(addReveal);
  document.querySelectorAll("[data-lint]").forEach(addLint);
})();
