"use strict";
// The page around the canvas: hint, score and time, and the panel at the end, whose links are commands. Navigating to
// a command's URL asks the application to act, and this page stays as it is.

const PAGE = `
  <canvas id="stage" aria-hidden="true"></canvas>
  <div id="hud" hidden>
    <div class="score"><i class="coin"></i><span id="score">0</span></div>
    <div class="time"><i id="time"></i></div>
  </div>
  <div id="hint">
    <h1>Catch coins and gifts</h1>
    <p>Steer with finger, mouse or <b>\u2190</b>&nbsp;<b>\u2192</b>, dash with <b>Space</b></p>
  </div>
  <div id="over" role="status" hidden>Time\u2019s up!</div>
  <section id="end" role="dialog" aria-labelledby="result" tabindex="-1" hidden>
    <header>
      <canvas id="icon" aria-hidden="true"></canvas>
      <div>
        <p class="name">Sky Harbor</p>
        <h2 id="result"></h2>
        <p id="stars" role="img"></p>
      </div>
    </header>
    <nav aria-label="What next?">
      <a class="get" href="reportclick://store">Get it</a>
      <a href="closead://done">Close</a>
    </nav>
  </section>`;

document.title = "Sky Harbor: Harbor Dash";
document.documentElement.lang = "en";
const root = document.getElementById("harbor-dash");
root.innerHTML = PAGE;
const part = (id) => document.getElementById(id);

function showProgress(world) {
  part("hint").classList.toggle("gone", world.time >= 0);
  part("hud").hidden = world.time < 0.3 || world.hasEnded;
  part("score").textContent = world.score;
  part("time").style.transform = `scaleX(${clamp(1 - world.time / PLAY_SECONDS, 0, 1)})`;
}

function paintIcon() {
  const icon = part("icon");
  const c = sized(icon, 84, 84, Math.min(3, devicePixelRatio || 1));
  c.fillStyle = vertical(c, 0, 84, [0, "#6d3f88"], [0.6, "#f08a6b"], [1, "#ffd08a"]);
  c.fillRect(0, 0, 84, 84);
  c.fillStyle = "#fff0c4";
  disc(c, 58, 46, 15);
  c.fillStyle = "#3d3d87";
  c.fillRect(0, 60, 84, 24);
  at(c, 41, 62, 0.26, () => paintBoat(c, 0));
}

function showTimeUp(world) {
  part("over").hidden = false;
  location.href = "reportfinished://harbor-dash";
  setTimeout(() => showEnd(world), 900);
}

let endShownAt = Infinity;

const isEndShown = () => endShownAt < Infinity;

function showEnd(world) {
  const stars = starsOf(world);
  part("over").hidden = true;
  part("result").textContent = `You caught ${world.score} ${world.score === 1 ? "coin" : "coins"}`;
  part("stars").innerHTML = "\u2605".repeat(stars) + `<span>${"\u2605".repeat(3 - stars)}</span>`;
  part("stars").setAttribute("aria-label", `${stars} of 3 stars`);
  part("end").hidden = false;
  part("end").focus({ preventScroll: true });
  paintIcon();
  endShownAt = performance.now();
}

// What was meant for the boat must not press a button that has just come up.
part("end").addEventListener("click", (event) => {
  if (performance.now() - endShownAt < 500) event.preventDefault();
});

const links = [...root.querySelectorAll("a")];

function chooseLink(event) {
  const current = links.indexOf(document.activeElement);
  const stride = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
  if (stride) links[current < 0 ? 0 : (current + stride + links.length) % links.length].focus();
  else if (event.key === " " && current >= 0 && !event.repeat) links[current].click();
  else return;
  event.preventDefault();
}
