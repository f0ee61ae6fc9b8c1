"use strict";
// Harbor Dash without a pixel: what falls when, and what the boat catches. Across, 0 and 1 are the edges of the field;
// downwards, 0 is where things appear and 1 the waterline. The same seed and the same moves make the same game.

const READY_SECONDS = 2.8; // the hint is read, the first coins are on their way
const PLAY_SECONDS = 12;
const STEP = 1 / 120;

const KINDS = {
  coin: { points: 1, fall: 2.3 },
  gift: { points: 5, fall: 3.1 },
  storm: { points: -3, fall: 2.6 },
};

function randomFrom(seed) {
  let state = seed;
  return () => {
    state = (state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(state ^ (state >>> 15), 1 | state);
    mixed = (mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed)) ^ mixed;
    return ((mixed ^ (mixed >>> 14)) >>> 0) / 4294967296;
  };
}

const clamp = (value, low, high) => Math.min(high, Math.max(low, value));

// Trails of coins that a quick boat can follow, with gifts and storms in between. All of it lands in time.
function makeSchedule(random) {
  const schedule = [];
  const add = (at, kind, x) => {
    const quicker = 1 - 0.22 * clamp(at / PLAY_SECONDS, 0, 1);
    const fall = KINDS[kind].fall * quicker;
    if (at + fall < PLAY_SECONDS) schedule.push({ at, kind, x: clamp(x, 0.09, 0.91), fall, phase: 6.28 * random() });
  };
  let x = 0.5;
  for (let at = -1.9, round = 0; at < PLAY_SECONDS; ++round) {
    const side = x > 0.62 ? -1 : x < 0.38 ? 1 : random() < 0.5 ? -1 : 1;
    const stride = side * (0.05 + 0.04 * random());
    for (let coin = 0; coin < 4; ++coin, at += 0.24) add(at, "coin", (x += stride));
    if (round % 2 === 1) add(at - 0.6, "gift", x - side * (0.2 + 0.2 * random()));
    if (round % 2 === 0) add(at - 0.2, "storm", x + side * (0.16 + 0.1 * random()));
    x = clamp(x + 0.3 * (random() - 0.5), 0.12, 0.88);
    at += 0.3 - 0.12 * clamp(at / PLAY_SECONDS, 0, 1);
  }
  return schedule.sort((a, b) => a.at - b.at);
}

function newWorld(seed) {
  const schedule = makeSchedule(randomFrom(seed));
  const best = schedule.reduce((sum, item) => sum + Math.max(0, KINDS[item.kind].points), 0);
  return {
    time: -READY_SECONDS, score: 0, best, schedule, items: [], events: [], hasEnded: false,
    boat: { x: 0.5, velocity: 0, facing: 1, dash: 0 },
    // How near the boat a thing is caught, across and above the waterline: depends on the window.
    reach: { across: 0.15, above: 0.1 },
  };
}

// `input` has `direction` (-1, 0, 1: keys), `target` (0 to 1, or null: pointer) and `dash` (true for one step).
function moveBoat(boat, input, time, dt) {
  const before = boat.x;
  if (input.dash && boat.dash <= 0) boat.dash = 0.26;
  boat.dash -= dt;
  if (boat.dash > 0) boat.x += (input.direction || boat.facing) * 2.1 * dt;
  else if (input.direction) boat.x += input.direction * 0.8 * dt;
  else if (input.target !== null) boat.x += clamp((input.target - boat.x) * (1 - Math.exp(-16 * dt)), -3 * dt, 3 * dt);
  else if (time < 0 && !input.used) boat.x = 0.5 + 0.12 * Math.sin(2.2 * (time + READY_SECONDS)); // shows how
  boat.x = clamp(boat.x, 0.04, 0.96);
  boat.velocity += ((boat.x - before) / dt - boat.velocity) * (1 - Math.exp(-12 * dt));
  if (Math.abs(boat.velocity) > 0.12) boat.facing = Math.sign(boat.velocity);
}

function moveItem(item, time) {
  item.y = (time - item.at) / item.fall;
  item.sway = item.kind === "gift" ? 0.025 * Math.sin(2.4 * time + item.phase) : 0;
}

// Whether the item goes on falling.
function judge(world, item) {
  const x = item.x + item.sway;
  const isCaught = item.y > 1 - world.reach.above && Math.abs(x - world.boat.x) < world.reach.across;
  if (!isCaught && item.y < 1.02) return true;
  const points = isCaught ? KINDS[item.kind].points : 0;
  world.score = Math.max(0, world.score + points);
  world.events.push({ kind: item.kind, isCaught, points, x, y: item.y });
  return false;
}

function step(world, input, dt) {
  world.time += dt;
  moveBoat(world.boat, input, world.time, dt);
  if (world.hasEnded) return;
  while (world.schedule.length > 0 && world.schedule[0].at <= world.time) world.items.push(world.schedule.shift());
  for (const item of world.items) moveItem(item, world.time);
  world.items = world.items.filter((item) => judge(world, item));
  world.hasEnded = world.time >= PLAY_SECONDS;
}

function starsOf(world) {
  return world.score >= 0.7 * world.best ? 3 : world.score >= 0.35 * world.best ? 2 : world.score > 0 ? 1 : 0;
}
