"use strict";
// The page's links are commands: navigating to one asks the application to act, and the page stays as it is.
const links = [...document.querySelectorAll("a")];

function go(step) {
  const at = links.indexOf(document.activeElement);
  links[at < 0 ? 0 : (at + step + links.length) % links.length].focus();
}

document.addEventListener("keydown", (event) => {
  if (event.key === "ArrowDown" || event.key === "ArrowRight") go(1);
  else if (event.key === "ArrowUp" || event.key === "ArrowLeft") go(-1);
  else if (event.key === " " && document.activeElement.tagName === "A") document.activeElement.click();
  else return;
  event.preventDefault();
});

document.addEventListener("dragstart", (event) => event.preventDefault());
