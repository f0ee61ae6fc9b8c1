"use strict";
// The harbour: painted once per window size where nothing moves, and every frame where something does.

function vertical(c, top, bottom, ...stops) {
  const gradient = c.createLinearGradient(0, top, 0, bottom);
  for (const [at, colour] of stops) gradient.addColorStop(at, colour);
  return gradient;
}

function disc(c, x, y, radius) {
  c.beginPath();
  c.arc(x, y, radius, 0, 7);
  c.fill();
}

function glow(c, x, y, radius, colour, alpha) {
  const gradient = c.createRadialGradient(x, y, 0, x, y, radius);
  for (const [at, share] of [[0, 1], [0.4, 0.35], [1, 0]]) gradient.addColorStop(at, `rgba(${colour},${alpha * share})`);
  c.fillStyle = gradient;
  disc(c, x, y, radius);
}

// Draws with `paint` around a place, in its own units and possibly turned.
function at(c, x, y, scale, paint, turn = 0) {
  c.save();
  c.translate(x, y);
  c.rotate(turn);
  c.scale(scale, scale);
  paint(c);
  c.restore();
}

function paintStars(c, view) {
  const random = randomFrom(4);
  c.fillStyle = "#fff7e6";
  for (let index = 0; index < 70; ++index) {
    const y = view.horizon * 0.6 * random();
    c.globalAlpha = (0.3 + 0.6 * random()) * (1 - y / (view.horizon * 0.62));
    disc(c, view.width * random(), y, (0.6 + 0.8 * random()) * Math.max(1, view.unit));
  }
  c.globalAlpha = 1;
}

function paintRidge(c, view, seed, height, colour) {
  const random = randomFrom(seed);
  const waves = [0, 1, 2, 3].map(() => [0.004 + 0.014 * random(), 6.3 * random(), 0.3 + 0.7 * random()]);
  c.fillStyle = colour;
  c.beginPath();
  c.moveTo(0, view.horizon);
  for (let x = 0; x < view.width + 6; x += 6) {
    const level = waves.reduce((sum, [often, phase, weight]) => sum + weight * Math.sin((often * x) / view.unit + phase), 0);
    c.lineTo(x, view.horizon - height * view.unit * Math.max(0.12, 0.5 + 0.3 * level));
  }
  c.lineTo(view.width + 6, view.horizon);
  c.fill();
}

function paintLighthouse(c) {
  c.fillStyle = vertical(c, 0, 120, [0, "#5b3f6e"], [0.65, "#332a63"], [1, "rgba(51,42,99,0)"]);
  c.fill(new Path2D("M-160 130C-110 30-60 0-34-12C0-24 30-15 52 12C84 38 104 68 150 130Z"));
  c.fillStyle = "rgba(240,138,107,.22)";
  c.fill(new Path2D("M18-14C46 6 76 40 104 82L70 64C56 36 40 10 18-14Z"));
  const across = (...stops) => {
    const gradient = c.createLinearGradient(-25, 0, 25, 0);
    stops.forEach((colour, index) => gradient.addColorStop(index / (stops.length - 1), colour));
    return gradient;
  };
  c.fillStyle = across("#d9c3cf", "#fff7ec", "#ffe1b8");
  c.fill(new Path2D("M-15-164H15L25-8H-25Z"));
  c.fillStyle = across("#a83350", "#e8604f");
  c.fill(new Path2D("M-16.400-142H16.400L18-116H-18ZM-19.700-90H19.700L21.400-64H-21.400ZM-23-38H23L24.700-12H-24.700Z"));
  c.fillStyle = "#3a2a55";
  c.fill(new Path2D("M-21-170H21V-163H-21ZM-13-200H13V-197H-13Z"));
  c.fillStyle = "#fff0b8";
  c.fillRect(-11, -197, 22, 27);
  c.fillStyle = "#a83350";
  c.fill(new Path2D("M-18-199C-12-216 12-216 18-199ZM-1.500-224H1.500V-210H-1.500Z"));
  glow(c, 0, -185, 64, "255,240,184", 0.8);
}

// The harbour in the sky: a rock with houses and, its sails apart, a windmill.
function paintIsland(c) {
  c.fillStyle = vertical(c, 0, 90, [0, "#6b4a72"], [1, "#3a2a55"]);
  c.fill(new Path2D("M-92 0C-70 34-52 40-34 62C-22 78-8 96 2 104C14 84 30 70 46 48C62 36 80 26 92 0Z"));
  c.fillStyle = vertical(c, -14, 14, [0, "#7fc08a"], [1, "#4b8a76"]);
  c.fill(new Path2D("M-96 2C-70-16 70-16 96 2C70 16-70 16-96 2Z"));
  for (const [x, width, tall, wall, roof] of [[-52, 28, 26, "#fff1dc", "#d9534f"], [-18, 24, 34, "#ffe2c0", "#2f7f93"], [14, 26, 24, "#fff1dc", "#e8924a"]]) {
    c.fillStyle = wall;
    c.fillRect(x, -6 - tall, width, tall);
    c.fillStyle = roof;
    c.fill(new Path2D(`M${x - 5} ${-6 - tall}L${x + width / 2} ${-24 - tall}L${x + width + 5} ${-6 - tall}Z`));
    c.fillStyle = "#ffcf6b";
    c.fillRect(x + width / 2 - 4, 3 - tall, 8, 9);
  }
  c.fillStyle = "#fff1dc";
  c.fill(new Path2D("M54-4L60-58H72L78-4Z"));
}

// What stands still, in a canvas of the window's size.
function paintBackdrop(c, view) {
  const { width, height, horizon, unit } = view;
  c.fillStyle = vertical(c, 0, horizon, [0, "#23245f"], [0.45, "#7d4790"], [0.8, "#ea7d66"], [1, "#ffc583"]);
  c.fillRect(0, 0, width, horizon + 1);
  paintStars(c, view);
  glow(c, view.sun, horizon - 62 * unit, 260 * unit, "255,223,158", 0.75);
  c.fillStyle = vertical(c, horizon - 110 * unit, horizon - 10 * unit, [0, "#fff6d5"], [1, "#ffc46b"]);
  disc(c, view.sun, horizon - 62 * unit, 48 * unit);
  paintRidge(c, view, 11, 60, "#c07891");
  paintRidge(c, view, 23, 34, "#8a5289");
  c.fillStyle = vertical(c, horizon, height, [0, "#f7a578"], [0.12, "#c2718a"], [0.45, "#54509a"], [1, "#20245f"]);
  c.fillRect(0, horizon, width, height - horizon);
  at(c, view.lighthouse.x, view.lighthouse.y, 0.62 * unit, paintLighthouse);
}

const CLOUDS = [[0.1, 0.42, 24, 9], [0.42, 0.64, 20, 7], [0.72, 0.56, 30, 12], [0.95, 0.26, 22, 8]];

function paintClouds(c, view, time) {
  c.fillStyle = "#ffe3d2";
  c.globalAlpha = 0.3;
  for (const [start, level, size, speed] of CLOUDS) {
    const span = view.width + 200 * view.unit;
    const x = (((start * view.width - speed * view.unit * time) % span) + span) % span - 100 * view.unit;
    at(c, x, level * view.horizon, (size * view.unit) / 24, () => {
      c.fill(new Path2D("M-46 10A14 14 0 0 1-34-14A19 19 0 0 1-4-24A22 22 0 0 1 34-12A13 13 0 0 1 46 10Z"));
    });
  }
  c.globalAlpha = 1;
}

function paintBeam(c, view, time) {
  const { x, y } = view.lighthouse;
  at(c, x, y - 185 * 0.62 * view.unit, view.unit, () => {
    for (const side of [0, Math.PI]) {
      at(c, 0, 0, 1, () => {
        const beam = c.createLinearGradient(0, 0, 420, 0);
        beam.addColorStop(0, "rgba(255,237,173,.5)");
        beam.addColorStop(1, "rgba(255,237,173,0)");
        c.fillStyle = beam;
        c.fill(new Path2D("M0-3L420-46V46L0 3Z"));
      }, -0.5 + 0.26 * Math.sin(time - 0.8) + side);
    }
  });
}

function paintWindmill(c, time) {
  at(c, 66, -56, 1, () => {
    c.fillStyle = "rgba(255,250,240,.95)";
    for (let sail = 0; sail < 4; ++sail) {
      c.rotate(Math.PI / 2);
      c.fillRect(-1.5, -40, 3, 40);
      c.fillRect(1.5, -38, 10, 28);
    }
  }, 1.1 * time);
}

// The sun's road on the water: short strokes that widen towards us.
function paintShimmer(c, view, time) {
  const random = randomFrom(9);
  c.lineCap = "round";
  for (let row = 0; row < 22; ++row) {
    const depth = row / 22;
    const y = view.horizon + 4 * view.unit + (view.height - view.horizon) * depth ** 1.5;
    for (let stroke = 0; stroke < 2; ++stroke) {
      const x = view.sun + (random() * 2 - 1) * (34 + 120 * depth) * view.unit;
      const length = (10 + 30 * random()) * (0.4 + depth) * view.unit;
      const shine = 0.5 + 0.5 * Math.sin(3.1 * time + 6.3 * random());
      c.strokeStyle = `rgba(255,219,158,${(0.5 - 0.36 * depth) * shine})`;
      c.lineWidth = (1.2 + 2.2 * depth) * view.unit;
      c.beginPath();
      c.moveTo(x - length / 2, y);
      c.lineTo(x + length / 2, y);
      c.stroke();
    }
  }
}

function paintWave(c, view, time, y, amplitude, speed, length, colour) {
  const unit = view.unit;
  c.fillStyle = colour;
  c.beginPath();
  c.moveTo(0, view.height);
  for (let x = 0; x < view.width + 8; x += 8) {
    const along = x / unit + speed * time;
    c.lineTo(x, y + amplitude * unit * (Math.sin(along / length) + 0.4 * Math.sin((along - 1.6 * speed * time) / (0.47 * length) + 1)));
  }
  c.lineTo(view.width + 8, view.height);
  c.fill();
}

// Everything behind the boat and what it catches.
function paintScene(c, view, time) {
  c.drawImage(view.backdrop, 0, 0, view.width, view.height);
  paintClouds(c, view, time);
  const bob = 5 * view.unit * Math.sin(1.3 * time);
  at(c, view.island.x, view.island.y + bob, 0.72 * view.unit, () => {
    paintIsland(c);
    paintWindmill(c, time);
  });
  paintShimmer(c, view, time);
  paintBeam(c, view, time);
  paintWave(c, view, time, view.waterline - 34 * view.unit, 3, 34, 46, "rgba(69,67,140,.72)");
  paintWave(c, view, time, view.waterline - 12 * view.unit, 4, 46, 58, "rgba(61,61,135,.66)");
}

// The water in front of the boat.
function paintForeground(c, view, time) {
  paintWave(c, view, time, view.waterline + 12 * view.unit, 4.5, 62, 66, "rgba(51,54,124,.86)");
  paintWave(c, view, time, view.waterline + 46 * view.unit, 5, 84, 84, "rgba(39,43,106,.92)");
}
