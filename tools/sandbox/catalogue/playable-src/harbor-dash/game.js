"use strict";
// What makes the game run: window, picture, clock and input.

const SEED = 20;
const stage = part("stage");
const context = stage.getContext("2d");

const world = newWorld(SEED);
const effects = new Effects();
const input = { direction: 0, target: null, dash: false, used: false };
let heading = 1; // of the boat's picture, from -1 to 1
let view = null;

// ---------------------------------------------------------------- window

const newCanvas = () => document.createElement("canvas");

function sized(canvas, width, height, ratio) {
  canvas.width = Math.round(width * ratio);
  canvas.height = Math.round(height * ratio);
  const c = canvas.getContext("2d");
  c.scale(ratio, ratio);
  return c;
}

function fitWindow() {
  const width = Math.max(1, innerWidth);
  const height = Math.max(1, innerHeight);
  const ratio = Math.min(2, devicePixelRatio || 1);
  const unit = Math.max(0.3, Math.min(width / 390, height / 560));
  const field = Math.min(width - 16 * unit, 2.2 * height);
  const horizon = 0.6 * height;
  view = {
    width, height, unit, horizon,
    waterline: height - 92 * unit,
    field: { left: (width - field) / 2, width: field },
    sun: 0.6 * width,
    lighthouse: { x: Math.max(62 * unit, 0.15 * width), y: horizon + 26 * unit },
    island: { x: width - Math.max(84 * unit, 0.16 * width), y: 0.56 * horizon },
    backdrop: newCanvas(),
  };
  world.reach = { across: (56 * unit) / field, above: (62 * unit) / view.waterline };
  paintBackdrop(sized(view.backdrop, width, height, ratio), view);
  sized(stage, width, height, ratio);
  paint();
}

const screenX = (x) => view.field.left + x * view.field.width;
const screenY = (y) => -40 * view.unit + y * (view.waterline + 40 * view.unit);

// ---------------------------------------------------------------- picture

function paintChevrons(c, x, y, unit) {
  const pulse = Math.sin(5 * world.time);
  c.lineWidth = 5;
  c.lineCap = c.lineJoin = "round";
  c.strokeStyle = "#fffaf0";
  for (const side of [-1, 1]) {
    at(c, x + side * (92 + 5 * pulse) * unit, y - 34 * unit, unit, () => c.stroke(new Path2D(`M${-6 * side}-15L${8 * side} 0L${-6 * side} 15`)));
  }
}

function paintPlayer(c) {
  const { boat, time } = world;
  const x = screenX(boat.x);
  const y = view.waterline + 3 * view.unit * Math.sin(1.9 * time);
  const width = Math.sign(heading || 1) * Math.max(0.3, Math.abs(heading));
  c.save();
  c.translate(x, y);
  c.rotate(0.04 * Math.sin(1.5 * time) + 0.1 * Math.max(-2, Math.min(2, boat.velocity)));
  c.scale(0.5 * view.unit * width, 0.5 * view.unit);
  paintBoat(c, time);
  c.restore();
  if (time < 0 && !input.used) paintChevrons(c, x, y, view.unit);
}

function paint() {
  const c = context;
  const { time } = world;
  paintScene(c, view, time);
  paintPlayer(c);
  for (const item of world.items) {
    at(c, screenX(item.x + item.sway), screenY(item.y), view.unit, () => PAINTERS[item.kind](c, time, item.phase));
  }
  paintForeground(c, view, time);
  at(c, 0, 0, view.unit, () => effects.paint(c));
}

// ---------------------------------------------------------------- time

function advance(seconds) {
  const before = world.time;
  for (let rest = seconds; rest > 0; rest -= STEP) {
    step(world, input, STEP);
    input.dash = false;
  }
  effects.step(world.time - before);
  heading += (world.boat.facing - heading) * (1 - Math.exp(before - world.time) ** 14);
  for (const event of world.events.splice(0)) {
    effects.show(event, screenX(event.x) / view.unit, screenY(event.y) / view.unit);
  }
}

// A hidden window gets no frames: the game waits. After a long gap it goes on as if there had been none.
let lastFrame = null;
let isOver = false;

function frame(now) {
  if (lastFrame !== null) advance(Math.min(0.25, (now - lastFrame) / 1000));
  lastFrame = now;
  showProgress(world);
  paint();
  if (world.hasEnded && !isOver) end();
  requestAnimationFrame(frame);
}

function end() {
  isOver = true;
  world.items = [];
  held.clear();
  steer();
  showTimeUp(world);
}

// ---------------------------------------------------------------- input

const held = new Set();
const STEERING = { ArrowLeft: -1, KeyA: -1, ArrowRight: 1, KeyD: 1 };

function steer() {
  input.direction = Math.sign([...held].reduce((sum, code) => sum + STEERING[code], 0));
}

addEventListener("keydown", (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  if (isEndShown()) return chooseLink(event);
  if (event.code in STEERING) held.add(event.code);
  else if (event.code !== "Space") return;
  input.dash ||= event.code === "Space" && !event.repeat;
  input.used = true;
  input.target = null;
  steer();
  event.preventDefault();
});

function release(code) {
  if (code) held.delete(code);
  else held.clear();
  steer();
}

addEventListener("keyup", (event) => release(event.code));
addEventListener("blur", () => release());

function follow(event) {
  input.used = true;
  input.target = clamp((event.clientX - view.field.left) / view.field.width, 0, 1);
}

addEventListener("pointerdown", follow);
addEventListener("pointermove", follow);
addEventListener("dragstart", (event) => event.preventDefault());
addEventListener("resize", fitWindow);

fitWindow();
requestAnimationFrame(frame);
