"use strict";
const TRACK = "{{base}}/track/wall.html";
const OFFERS = JSON.parse(document.getElementById("offers").textContent);
const ALL = "All";
const shown = { text: "", category: ALL, sort: "coins" };
const $ = (id) => document.getElementById(id);

// The application escapes each value of the widget's address, and a plus sign stands for itself.
function readQuery(text) {
  const values = {};
  for (const item of text.replace(/^\?/, "").split("&")) {
    const [key] = item.split("=", 1);
    const value = item.slice(key.length + 1);
    try {
      values[key] = decodeURIComponent(value);
    } catch {
      values[key] = value;
    }
  }
  return values;
}
const query = readQuery(location.search);

// The application unescapes the command once and escapes the target anew, percent signs included: the values are as
// they are, but for the sign that would begin another one.
function command(offer) {
  const plain = (value) => (value ?? "").replaceAll("&", "%26");
  const target = `${TRACK}?offer=${plain(offer.id)}&userid=${plain(query.userid)}&clickid=${plain(query.pub_click_id)}`;
  return "click://" + encodeURIComponent(target);
}

function element(name, properties = {}, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}

function drawing(className, box, ...shapes) {
  const make = (name, attributes) => {
    const made = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    return made;
  };
  const svg = make("svg", { class: className, viewBox: box, "aria-hidden": "true" });
  svg.append(...shapes.map(([fill, d]) => make("path", { fill, d })));
  return svg;
}

function time(minutes) {
  if (minutes < 60) return `${minutes} min`;
  if (minutes < 1440) return `${Math.round(minutes / 60)} h`;
  return minutes < 2880 ? "1 day" : `${Math.round(minutes / 1440)} days`;
}

function card(offer) {
  const coin = drawing("", "-12 -12 24 24", ["#ffc94d", "M-11 0a11 11 0 1 1 22 0 11 11 0 0 1-22 0z"],
    ["#8a4a12", "m0-7 2.100 4.400 4.800.6-3.500 3.400.8 4.800L0 3.900l-4.300 2.300.9-4.800-3.500-3.400 4.800-.6z"]);
  const coins = offer.coins.toLocaleString("en");
  const get = element("a", { className: "get", href: command(offer) }, coin, element("span", { textContent: coins }));
  get.setAttribute("aria-label", `Get ${coins} coins: ${offer.name}`);
  return element("li", {},
    drawing("icon", "0 0 60 60", [offer.icon.ground, "M0 0h60v60H0z"], ...offer.icon.shapes),
    element("div", {},
      element("h2", { textContent: offer.name }),
      element("p", { className: "task", textContent: offer.task }),
      element("p", { className: "facts", textContent: `${offer.category} · ${time(offer.minutes)}` })),
    get);
}

const orders = {
  coins: (a, b) => b.coins - a.coins,
  minutes: (a, b) => a.minutes - b.minutes,
  name: (a, b) => a.name.localeCompare(b.name, "en"),
};

function chosen() {
  const words = shown.text.toLowerCase().split(/\s+/).filter(Boolean);
  return OFFERS.filter((offer) => {
    const text = `${offer.name} ${offer.task} ${offer.category}`.toLowerCase();
    return (shown.category === ALL || offer.category === shown.category) && words.every((word) => text.includes(word));
  }).sort(orders[shown.sort]);
}

function showEmpty(text) {
  const [title, advice, button] = $("empty").querySelectorAll("h2, p, button");
  button.hidden = OFFERS.length === 0;
  title.textContent = OFFERS.length === 0 ? "No offers right now" : `Nothing found${text ? ` for “${text}”` : ""}`;
  advice.textContent = OFFERS.length === 0 ? "New ones come every day. Have a look tomorrow." : "Try another word or another category.";
}

function show() {
  const offers = chosen();
  $("list").replaceChildren(...offers.map(card));
  $("count").textContent = offers.length === 1 ? "1 offer" : `${offers.length} offers`;
  $("empty").hidden = offers.length > 0;
  showEmpty(shown.text.trim());
  for (const button of $("categories").children) {
    button.setAttribute("aria-pressed", button.textContent === shown.category);
  }
  document.querySelector("main").scrollTop = 0;
}

function chooseCategory(category) {
  shown.category = category;
  show();
}

function showAll() {
  $("search").value = shown.text = "";
  chooseCategory(ALL);
  $("search").focus();
}

for (const category of [ALL, ...new Set(OFFERS.map((offer) => offer.category))]) {
  $("categories").append(element("button", { type: "button", textContent: category, onclick: () => chooseCategory(category) }));
}
$("search").addEventListener("input", () => { shown.text = $("search").value; show(); });
$("sort").addEventListener("change", () => { shown.sort = $("sort").value; show(); });
$("empty").querySelector("button").addEventListener("click", showAll);
addEventListener("keydown", (event) => {
  if (event.key !== "Escape") return;
  event.preventDefault();
  if (shown.text) showAll();
  else $("close").click();
});

document.querySelector("footer").textContent = [
  query.userid ? `Coins go to the account “${query.userid}”.` : "Coins go to the account of this device.",
  query.idfa ? "Your advertising identifier is used to confirm offers." : "Your advertising identifier is not shared.",
].join(" ");
show();
