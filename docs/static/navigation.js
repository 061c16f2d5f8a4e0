// The theme opens its side bars by labels of hidden boxes, which a keyboard does not reach.
"use strict";

document.addEventListener("DOMContentLoaded", () => {
  document.querySelectorAll("label.nav-overlay-icon, label.toc-overlay-icon").forEach((label) => {
    const box = document.getElementById(label.htmlFor);
    label.tabIndex = 0;
    label.setAttribute("role", "button");
    const tell = () => label.setAttribute("aria-expanded", box.checked);
    box.addEventListener("change", tell);
    label.addEventListener("keydown", (event) => {
      if (event.key !== "Enter" && event.key !== " ") return;
      event.preventDefault();
      box.click();
    });
    tell();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    document.querySelectorAll("input.sidebar-toggle:checked").forEach((box) => box.click());
  });
});
