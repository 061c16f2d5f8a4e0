// Makes a row of frames into a slider that shows one of them at a time. Without this script the row stays.
"use strict";

function makeSlider(slider, number) {
  const frames = Array.from(slider.querySelectorAll(":scope > .frame"));
  const input = document.createElement("input");
  input.type = "range";
  input.id = `slider-${number}`;
  input.min = 0;
  input.max = frames.length - 1;
  input.value = slider.dataset.start;

  const label = document.createElement("label");
  label.htmlFor = input.id;
  label.textContent = slider.dataset.label;
  const output = document.createElement("output");
  output.htmlFor = input.id;

  const show = () => {
    frames.forEach((frame, index) => {
      frame.hidden = index !== input.valueAsNumber;
    });
    const value = frames[input.valueAsNumber].dataset.value;
    output.textContent = value;
    input.setAttribute("aria-valuetext", value);
  };
  input.addEventListener("input", show);
  // Frames that are not shown are loaded once somebody is about to move the slider.
  const load = () => slider.querySelectorAll("img").forEach((image) => (image.loading = "eager"));
  for (const event of ["focus", "pointerenter"]) input.addEventListener(event, load, { once: true });

  const control = document.createElement("div");
  control.className = "control";
  control.append(label, output, input);
  slider.prepend(control);
  slider.classList.add("moving");
  // What does not scroll needs no place among the stops of the keyboard.
  slider.removeAttribute("tabindex");
  show();
}

document.addEventListener("DOMContentLoaded", () => {
  document.querySelectorAll(".slider").forEach(makeSlider);
});
