"use strict";
// What moves through the harbour: the boat, what falls towards it, and what happens when they meet. All are drawn
// around their own origin, in units of a window 390 wide.

function starPath(radius) {
  const path = new Path2D();
  for (let index = 0; index < 10; ++index) {
    const length = index % 2 === 0 ? radius : 0.45 * radius;
    const angle = (index * Math.PI) / 5 - Math.PI / 2;
    path.lineTo(length * Math.cos(angle), length * Math.sin(angle));
  }
  path.closePath();
  return path;
}
const STAR = starPath(11);

// The origin is amidships on the waterline; the bow points right.
function paintBoat(c, time) {
  const billow = 6 * Math.sin(1.7 * time);
  const sail = new Path2D(`M2-196C${-50 - billow}-150 ${-96 - billow}-80-92-22C-60-12-28-12 2-18Z`);
  const across = c.createLinearGradient(-90, 0, 20, 0);
  across.addColorStop(0, "#ffd9a8");
  across.addColorStop(1, "#fffaf0");
  c.fillStyle = across;
  c.fill(sail);
  c.save();
  c.clip(sail);
  c.fillStyle = "#e8604f";
  c.fill(new Path2D("M-120-64C-60-50-30-50 10-60V-38C-30-28-60-28-120-42Z"));
  c.restore();
  c.fillStyle = "#2f7f93";
  at(c, -32, -104, 1.55, () => c.fill(STAR));
  c.fillStyle = "#fff3df";
  c.fill(new Path2D(`M12-178C${40 + billow}-120 ${66 + billow}-70 88-16C60-12 36-14 12-20Z`));
  c.fillStyle = "#6b4030";
  c.fillRect(3, -210, 7, 222);
  const flutter = 4 * Math.sin(8 * time);
  c.fillStyle = "#e8604f";
  c.fill(new Path2D(`M6-212C-10 ${-218 + flutter}-22 ${-206 + flutter}-42 ${-210 - flutter}C-24-200-10-198 6-198Z`));
  c.fillStyle = vertical(c, -8, 46, [0, "#b5583f"], [1, "#6d2f35"]);
  c.fill(new Path2D("M-104-6C-40 6 50 6 118-14C104 22 78 44 50 46H-62C-88 40-100 20-104-6Z"));
  c.strokeStyle = "#ffe2b0";
  c.lineWidth = 5;
  c.stroke(new Path2D("M-103-4C-40 9 50 9 116-11"));
  c.fillStyle = "#ffcf6b";
  for (const x of [-50, -8, 34]) disc(c, x, 22, 6);
}

function paintCoin(c, time, phase) {
  c.scale(0.3 + 0.7 * Math.abs(Math.cos(2.4 * time + phase)), 1);
  c.fillStyle = "#b9692a";
  disc(c, 0, 1.5, 16);
  c.fillStyle = "#ffc94d";
  disc(c, 0, 0, 15.5);
  c.strokeStyle = "#fff0b8";
  c.lineWidth = 2;
  c.beginPath();
  c.arc(0, 0, 11.5, 0, 7);
  c.stroke();
  c.fillStyle = "#d98a2b";
  at(c, 0, 0.5, 0.75, () => c.fill(STAR));
}

function paintGift(c, time, phase) {
  c.rotate(0.12 * Math.cos(2.4 * time + phase));
  c.strokeStyle = "rgba(255,250,240,.85)";
  c.lineWidth = 1.4;
  c.stroke(new Path2D("M-27-34L-8-8M0-34V-8M27-34L8-8"));
  c.fillStyle = "#fffaf0";
  c.fill(new Path2D("M-28-33C-26-66 26-66 28-33C20-38 14-38 9-33C4-38-4-38-9-33C-14-38-20-38-28-33Z"));
  c.fillStyle = "#e8604f";
  c.fill(new Path2D("M-9-33C-8-50-4-57 0-57.500C4-57 8-50 9-33C4-38-4-38-9-33Z"));
  c.fillStyle = vertical(c, -10, 20, [0, "#37a0b2"], [1, "#226a7c"]);
  c.fill(new Path2D("M-17-7H17V20H-17Z"));
  c.fillStyle = "#ffd489";
  c.fill(new Path2D("M-3-7H3V20H-3ZM-19-11H19V-4H-19ZM-2-11C-14-22-15-9-2-11ZM2-11C14-22 15-9 2-11Z"));
}

function paintStorm(c, time, phase) {
  const flash = Math.sin(9 * time + phase) > 0.2;
  c.fillStyle = flash ? "#ffe45c" : "#ffb53f";
  c.strokeStyle = "#2a1f57";
  c.lineWidth = 2;
  const bolt = new Path2D("M-2 8L-11 27H-2L-7 44L14 20H4L10 8Z");
  c.fill(bolt);
  c.stroke(bolt);
  c.fillStyle = vertical(c, -24, 14, [0, "#6a628f"], [1, "#2b2450"]);
  const cloud = new Path2D("M-28 12A13 13 0 0 1-27-11A15 15 0 0 1-6-20A17 17 0 0 1 23-11A12 12 0 0 1 27 12Z");
  c.fill(cloud);
  c.strokeStyle = "rgba(255,227,210,.75)";
  c.stroke(cloud);
}

const PAINTERS = { coin: paintCoin, gift: paintGift, storm: paintStorm };

// Sparks, splashes and the points that rise from a catch; each lives for a moment.
class Effects {
  constructor() {
    this.list = [];
    this.random = randomFrom(3);
    this.isCalm = matchMedia("(prefers-reduced-motion: reduce)").matches;
  }

  add(effect) {
    this.list.push({ age: 0, vx: 0, vy: 0, gravity: 0, ...effect });
  }

  burst(x, y, colour, number, speed) {
    for (let index = 0; index < (this.isCalm ? 0 : number); ++index) {
      const angle = 6.28 * this.random();
      const pace = speed * (0.4 + 0.6 * this.random());
      this.add({ x, y, colour, vx: pace * Math.cos(angle), vy: pace * Math.sin(angle) - speed / 2, gravity: 420, life: 0.6, size: 2 + 3 * this.random() });
    }
  }

  show(event, x, y) {
    if (!event.isCaught) {
      if (event.kind !== "storm") this.add({ x, y, ring: true, colour: "#ffe3d2", life: 0.7 });
      this.burst(x, y, "#cfd3ff", 5, 90);
      return;
    }
    this.burst(x, y, event.points > 0 ? "#ffd95e" : "#c9c2ea", 12, 170);
    const text = event.points > 0 ? `+${event.points}` : `\u2212${-event.points}`;
    this.add({ x, y: y - 30, text, colour: event.points > 0 ? "#fffaf0" : "#ff9d8f", vy: -60, life: 0.9 });
  }

  step(dt) {
    for (const each of this.list) {
      each.age += dt;
      each.vy += each.gravity * dt;
      each.x += each.vx * dt;
      each.y += each.vy * dt;
    }
    this.list = this.list.filter((each) => each.age < each.life);
  }

  paint(c) {
    for (const each of this.list) {
      const rest = 1 - each.age / each.life;
      c.globalAlpha = Math.min(1, 2 * rest);
      c.fillStyle = c.strokeStyle = each.colour;
      if (each.text) paintPoints(c, each);
      else if (each.ring) paintRing(c, each, 1 - rest);
      else disc(c, each.x, each.y, each.size * rest);
    }
    c.globalAlpha = 1;
  }
}

function paintPoints(c, { x, y, text, colour }) {
  c.font = "800 26px system-ui, Cantarell, 'DejaVu Sans', sans-serif";
  c.textAlign = "center";
  c.lineJoin = "round";
  c.lineWidth = 5;
  c.strokeStyle = "#1d1950";
  c.strokeText(text, x, y);
  c.fillStyle = colour;
  c.fillText(text, x, y);
}

function paintRing(c, { x, y }, progress) {
  c.lineWidth = 2.5;
  c.beginPath();
  c.ellipse(x, y, 6 + 26 * progress, 2 + 7 * progress, 0, 0, 7);
  c.stroke();
}
