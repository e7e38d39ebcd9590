"use strict";

// Texts of devices and of the site file reach the page as textContent only: whatever they hold, it is shown and never
// run.

const SILENCE_MS = 12000;     // the service says something every 5 s
const RECONNECT_MS = 2000;
const RECENT_POLLS = 40;
const PICTURES = 12;
const CAMERAS = ["camera", "camera-3ge"];
const RANKS = {line_lost: 5, failed: 4, overdue: 3, waiting: 2, good: 0};
const RANGES = {
  "1h": {points: 360, refresh: 5000},
  "1d": {points: 300, refresh: 60000},
  "7d": {points: 336, refresh: 300000},
};

const SEVERITIES = ["critical", "high", "medium", "low"];
const STATES = ["raised", "returned", "acknowledged", "shelved", "waiting", "cleared"];

const byId = (id) => document.getElementById(id);

const state = {
  devices: new Map(),  // by name: {data, arrived, recent, order, row}
  site: new Map(),     // by name: {device, line}
  alarms: [],
  actors: [],
  rows: new Map(),     // of alarms, by name
  unit: "fieldline",
  version: null,
  heard: 0,            // when the service said something last, Date.now()
  lost: false,
  opened: null,        // the device that is shown alone
  picture: null,       // time of the picture that was chosen; null: the latest
  range: "1h",
  plot: null,
};

function element(tag, className, text) {
  const made = document.createElement(tag);
  if (className) made.className = className;
  if (text !== undefined) made.textContent = text;
  return made;
}

function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

function ageText(ms) {
  const seconds = Math.max(0, Math.round(ms / 1000));
  if (seconds < 60) return seconds + " s";
  if (seconds < 3600) return Math.floor(seconds / 60) + " min";
  if (seconds < 172800) return Math.floor(seconds / 3600) + " h";
  return Math.floor(seconds / 86400) + " days";
}

function timeText(iso) {
  return new Date(iso).toLocaleString(undefined, {dateStyle: "short", timeStyle: "medium"});
}

async function getJson(path) {
  const answer = await fetch(path, {cache: "no-store"});
  if (answer.status === 401) {
    location.replace("/login");
    throw new Error("a token is needed");
  }
  const json = await answer.json();
  if (!answer.ok) throw new Error(json.error.message);
  return json;
}

// The condition for people, and how bad it is.

function rankOf(data) {
  if (data.condition !== "good") return RANKS[data.condition] ?? 5;
  return data.warning || (data.value && data.value.plausible === false) ? 1 : 0;
}

function classOf(data) {
  const rank = rankOf(data);
  return rank >= 4 ? "bad" : rank >= 1 ? "unsure" : "good";
}

// `past` ms have gone by since the data came.
function conditionText(data, past) {
  const age = data.age_ms === null ? null : ageText(data.age_ms + past);
  const lastGood = data.last_good && data.last_good.value
    ? " Last good: " + data.last_good.value.text + ", " + ageText(data.last_good.age_ms + past) + " ago."
    : data.condition === "good" || data.condition === "waiting" ? "" : " Never good since the start.";
  switch (data.condition) {
    case "good":
      if (data.value && data.value.plausible === false) return "not plausible · " + age + " ago";
      return (state.lost ? "was " : "") + (data.warning ? "good, but " + data.warning : "good") + " · " + age + " ago";
    case "waiting":
      return "not polled yet";
    case "overdue":
      return "no poll has come back for " + age + "." + lastGood;
    default:
      return data.error.code + ": " + data.error.message + " · " + age + " ago." + lastGood;
  }
}

// The list

function makeRow(name) {
  const row = element("li");
  const link = element("a");
  link.href = "#device=" + encodeURIComponent(name);
  const parts = {
    name: element("span", "name", name),
    value: element("span", "value"),
    where: element("span", "quiet"),
    recent: document.createElementNS("http://www.w3.org/2000/svg", "svg"),
    state: element("span", "state"),
  };
  parts.recent.setAttribute("class", "recent");
  parts.recent.setAttribute("viewBox", "0 0 100 20");
  parts.recent.setAttribute("preserveAspectRatio", "none");
  parts.recent.setAttribute("aria-hidden", "true");
  link.append(parts.name, parts.value, parts.where, parts.recent, parts.state);
  row.append(link);
  return {row, link, parts};
}

// The last values as a line, with gaps where polls failed.
function drawRecent(svg, numbers) {
  const known = numbers.filter((number) => number !== null);
  const least = Math.min(...known);
  const span = Math.max(...known) - least;
  const runs = [[]];
  numbers.forEach((number, i) => {
    if (number === null) {
      runs.push([]);
      return;
    }
    const x = 100 * (i + RECENT_POLLS - numbers.length) / (RECENT_POLLS - 1);
    const y = span > 0 ? 18 - 16 * (number - least) / span : 10;
    runs.at(-1).push(x.toFixed(1) + "," + y.toFixed(1));
  });
  svg.replaceChildren(...runs.filter((run) => run.length > 1).map((run) => {
    const line = document.createElementNS("http://www.w3.org/2000/svg", "polyline");
    line.setAttribute("points", run.join(" "));
    return line;
  }));
}

function showRow(device) {
  const {data, row} = device;
  const {link, parts} = row;
  link.className = classOf(data);
  setText(parts.value, data.value ? data.value.text : "–");
  setText(parts.where, data.line + " · " + data.kind);
  setText(parts.state, conditionText(data, Date.now() - device.arrived));
  drawRecent(parts.recent, device.recent);
}

// The worst first, else as in the site file. Rows are moved only when their order changes, and keep the focus.
function sortRows() {
  const sorted = [...state.devices.values()].sort((a, b) => rankOf(b.data) - rankOf(a.data) || a.order - b.order);
  const rows = sorted.map((device) => device.row.row);
  const list = byId("devices");
  if (rows.every((row, i) => list.children[i] === row) && list.children.length === rows.length) return;
  const focused = document.activeElement;
  list.replaceChildren(...rows);
  if (list.contains(focused)) focused.focus({preventScroll: true});
}

function showLines() {
  const lines = new Map();
  for (const {data} of state.devices.values()) {
    const line = lines.get(data.line) ?? {devices: 0, bad: 0, lost: false};
    ++line.devices;
    if (data.condition !== "good" && data.condition !== "waiting") ++line.bad;
    line.lost ||= data.condition === "line_lost";
    lines.set(data.line, line);
  }
  const list = byId("lines");
  const texts = [...lines].map(([name, line]) => [
    name + ": " + (line.lost ? "lost" : line.bad ? line.bad + " of " + line.devices + " bad" : "good"), line.bad > 0]);
  if (texts.map(([text]) => text).join("\n") === [...list.children].map((item) => item.textContent).join("\n")) return;
  list.replaceChildren(...texts.map(([text, isBad]) => element("li", isBad ? "bad" : "", text)));
}

function showSummary() {
  const all = [...state.devices.values()];
  const bad = all.filter(({data}) => rankOf(data) >= 3).length;
  const raised = state.alarms.filter((alarm) => alarm.state === "raised").length;
  const alarms = raised === 0 ? "" : raised === 1 ? "1 alarm, " : raised + " alarms, ";
  setText(byId("summary"), alarms + (bad ? bad + " of " + all.length + " devices " + (bad === 1 ? "is" : "are") + " bad" : "all " + all.length + " devices are good"));
  document.title = (state.lost ? "lost – " : raised ? alarms.replace(", ", " – ") : bad ? bad + " bad – " : "") + state.unit;
}

// Alarms

async function postJson(path, body) {
  const answer = await fetch(path, {method: "POST", headers: {"Content-Type": "application/json"}, body: JSON.stringify(body)});
  if (answer.ok) return;
  const json = await answer.json();
  throw new Error(json.error.message);
}

function makeAlarmRow(name) {
  const row = element("li");
  const parts = {
    name: element("span", "name", name),
    value: element("span", "value"),
    state: element("span", "state"),
    told: element("ul", "told quiet"),
    button: element("button", "", "Acknowledge"),
  };
  parts.button.type = "button";
  parts.button.setAttribute("aria-label", "Acknowledge " + name);
  parts.button.addEventListener("click", () => acknowledge(name, parts));
  row.append(parts.name, parts.value, parts.state, parts.told, parts.button);
  return {row, parts};
}

async function acknowledge(name, parts) {
  const who = byId("who").value.trim() || "the page";
  parts.button.disabled = true;
  try {
    await postJson("api/v1/alarms/" + encodeURIComponent(name) + "/acknowledge", {who});
  } catch (error) {
    setText(parts.state, error.message);
  }
  parts.button.disabled = false;
  showAlarms();
}

function toldText(told) {
  const what = {sms: "SMS to ", mms: "picture to ", dial: "call to ", speech: "speech", relay: "relay ", picture: "picture of ", display: "page "};
  const outcome = {
    done: "done", waiting: told.tries ? "not yet done" : "waits", held: "held back: too many messages",
    failed: "given up", summarised: "told in a summary", replaced: "no longer needed",
  };
  return timeText(told.time) + " " + what[told.action] + (told.to ?? "") + ": " + outcome[told.outcome] +
    (told.reason ? " (" + told.reason + ")" : "");
}

function alarmText(alarm) {
  const age = ageText(Date.now() - new Date(alarm.since));
  const words = {
    raised: "raised " + age + " ago",
    returned: "over for " + age + ", not acknowledged",
    acknowledged: "acknowledged " + age + " ago by " + alarm.acknowledged_by,
    waiting: "waits for " + age,
    shelved: alarm.shelved ? "shelved until " + timeText(alarm.shelved.until) + " by " + alarm.shelved.who + ": " + alarm.shelved.why : "",
  };
  return (alarm.test ? "TEST · " : "") + alarm.severity + " · " + words[alarm.state] +
    (alarm.device ? " · " + alarm.device + (alarm.field ? " " + alarm.field : "") : "");
}

function showAlarmRow(alarm) {
  if (!state.rows.has(alarm.alarm)) state.rows.set(alarm.alarm, makeAlarmRow(alarm.alarm));
  const {row, parts} = state.rows.get(alarm.alarm);
  row.className = alarm.state === "raised" ? "bad" : alarm.state === "shelved" || alarm.state === "waiting" ? "quiet-alarm" : "unsure";
  setText(parts.value, alarm.text ?? "");
  setText(parts.state, alarmText(alarm));
  const told = alarm.told.map(toldText);
  if (told.join("\n") !== [...parts.told.children].map((item) => item.textContent).join("\n")) {
    parts.told.replaceChildren(...told.map((text) => element("li", "", text)));
  }
  parts.button.hidden = alarm.state !== "raised" && alarm.state !== "returned";
  return row;
}

function drawAlarms() {
  const rank = (alarm) => STATES.indexOf(alarm.state) * SEVERITIES.length + SEVERITIES.indexOf(alarm.severity);
  const shown = state.alarms.filter((alarm) => alarm.state !== "cleared").sort((a, b) => rank(a) - rank(b));
  const rows = shown.map(showAlarmRow);
  const list = byId("alarms");
  if (rows.length !== list.children.length || !rows.every((row, i) => list.children[i] === row)) {
    const focused = document.activeElement;
    list.replaceChildren(...rows);
    if (list.contains(focused)) focused.focus({preventScroll: true});
  }
  const cleared = state.alarms.length - shown.length;
  setText(byId("other-alarms"), cleared ? cleared + (cleared === 1 ? " alarm is clear" : " alarms are clear") : "");
  const troubles = state.actors.filter((actor) => actor.trouble);
  byId("actors").hidden = troubles.length === 0;
  setText(byId("actors"), troubles.map((actor) => actor.device + " can't be used: " + actor.trouble +
    (actor.waiting ? "; " + actor.waiting + " waiting" : "")).join(". "));
  byId("who-line").hidden = !shown.some((alarm) => alarm.state === "raised" || alarm.state === "returned");
  byId("alarms-view").hidden = state.alarms.length === 0;
  showSummary();
}

async function showAlarms() {
  try {
    const {alarms, actors} = await getJson("api/v1/alarms");
    state.alarms = alarms;
    state.actors = actors;
    drawAlarms();
  } catch {
    // The service is lost, which the page says elsewhere.
  }
}

function eventItem(event) {
  const item = element("li");
  const when = element("time", "", timeText(event.from ?? event.time));
  if (event.alarm !== undefined) {
    item.append(when, (event.test ? "TEST of alarm " : "alarm ") + event.alarm + ": " + event.state +
      (event.text ? ", " + event.device + " " + event.text : "") + (event.who ? " by " + event.who : "") +
      (event.why ? ": " + event.why : ""));
    return item;
  }
  if (event.device === undefined) {
    item.append(when, event.line + ": " + (event.error ? event.error.message : "the line can be used"));
    return item;
  }
  const duration = new Date(event.to) - new Date(event.from);
  item.append(when, event.device + ": " + event.error.message + " (" + event.error.code + ", " +
    (event.polls === 1 ? "1 poll" : event.polls + " polls in " + ageText(duration)) + ")");
  if (event.error.advice) item.append(element("div", "quiet", event.error.advice));
  return item;
}

async function showEvents(list, query) {
  try {
    const {events} = await getJson("api/v1/events?" + query);
    list.replaceChildren(...(events.length ? events.map(eventItem) : [element("li", "quiet", "nothing")]));
  } catch (error) {
    list.replaceChildren(element("li", "quiet", error.message));
  }
}

// A device alone

function fieldText(latest, field) {
  const physical = latest.physical && latest.physical[field.field];
  if (physical) {
    const number = Number(physical.value.toPrecision(7));
    return {text: number + (physical.unit ? " " + physical.unit : ""), isBad: physical.plausible === false};
  }
  return {text: String(latest.record[field.field] ?? ""), isBad: false};
}

async function showRecord() {
  const name = state.opened;
  try {
    const latest = await getJson("api/v1/latest?device=" + encodeURIComponent(name));
    if (name !== state.opened) return;
    const good = latest.record ? latest : latest.last_good;
    const table = byId("record");
    if (!good || !good.record) {
      setText(byId("record-age"), "There has been no good poll since the start.");
      table.replaceChildren();
      return;
    }
    setText(byId("record-age"), (good === latest ? "" : "This is old: ") + ageText(good.age_ms) + " ago");
    table.classList.toggle("old", good !== latest);
    const fields = state.site.get(name).device.fields;
    table.replaceChildren(...fields.map((field) => {
      const {text, isBad} = fieldText(good, field);
      const row = element("tr");
      const heading = element("th", "", field.field);
      heading.scope = "row";
      row.append(heading, element("td", isBad ? "bad" : "", text));
      return row;
    }));
  } catch (error) {
    setText(byId("record-age"), error.message);
  }
}

function showCondition() {
  const device = state.devices.get(state.opened);
  if (!device) return;
  const line = byId("device-condition");
  line.className = classOf(device.data);
  setText(line, (device.data.value ? device.data.value.text + " · " : "") +
    conditionText(device.data, Date.now() - device.arrived));
  setText(byId("device-advice"), device.data.error ? device.data.error.advice : "");
}

async function showPlot() {
  const name = state.opened;
  const field = byId("field").value;
  if (!name || !field || byId("plot-area").hidden) return;
  const range = state.range;
  const query = new URLSearchParams({device: name, field, from: range, points: RANGES[range].points});
  try {
    const history = await getJson("api/v1/history?" + query);
    if (name !== state.opened || field !== byId("field").value || range !== state.range) return;
    drawPlot(history);
  } catch (error) {
    setText(byId("point"), error.message);
  }
}

function picturePath(time) {
  return "api/v1/picture?" + new URLSearchParams({device: state.opened, time});
}

// The chosen one large, and the last ones to choose from.
async function showPictures() {
  const name = state.opened;
  if (!name || !CAMERAS.includes(state.site.get(name)?.device.kind)) return;
  try {
    const query = new URLSearchParams({device: name, limit: PICTURES});
    const {pictures} = await getJson("api/v1/pictures?" + query);
    if (name !== state.opened) return;
    byId("picture").hidden = pictures.length === 0;
    if (!pictures.length) {
      setText(byId("picture-time"), "There is no picture yet.");
      byId("pictures").replaceChildren();
      return;
    }
    const chosen = pictures.find(({time}) => time === state.picture) ?? pictures[0];
    const path = picturePath(chosen.time);
    if (byId("picture").getAttribute("src") !== path) byId("picture").src = path;
    byId("picture").alt = name + ", " + timeText(chosen.time);
    setText(byId("picture-time"), timeText(chosen.time) + (chosen === pictures[0] ? ", the latest" : ""));
    const times = pictures.map(({time}) => time).join();
    const list = byId("pictures");
    if (list.dataset.times !== times) list.replaceChildren(...pictures.map(({time}) => makePictureButton(time)));
    list.dataset.times = times;
    for (const button of list.querySelectorAll("button")) {
      button.setAttribute("aria-pressed", button.dataset.time === chosen.time);
    }
  } catch (error) {
    setText(byId("picture-time"), error.message);
  }
}

function makePictureButton(time) {
  const item = element("li");
  const button = element("button");
  const image = element("img");
  image.loading = "lazy";
  image.alt = "";
  image.src = picturePath(time);
  button.dataset.time = time;
  button.append(image, element("span", "", timeText(time)));
  button.addEventListener("click", () => {
    state.picture = time;
    showPictures();
  });
  item.append(button);
  return item;
}

function drawPlot(history) {
  const unit = history.unit_of_measurement;
  const rows = history.points.map(([time, least, mean, most]) => [new Date(time), [least, mean, most]]);
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(name).trim();
  const digits = (number) => Number(number.toPrecision(6)) + (unit ? " " + unit : "");
  const options = {
    file: rows,
    labels: ["time", "value"],
    customBars: true,
    dateWindow: [new Date(history.from).getTime(), new Date(history.to).getTime()],
    colors: [colour("--accent")],
    axisLineColor: colour("--edge"),
    gridLineColor: colour("--edge"),
    strokeWidth: 2,
    drawPoints: false,
    drawGapEdgePoints: true,
    yRangePad: 10,
    rightGap: 12,
    axes: {y: {axisLabelWidth: 56}},
    highlightCallback: (event, x, points) => {
      if (!points.length) return;
      const row = rows.find(([time]) => time.getTime() === x);
      const [least, mean, most] = row ? row[1] : [];
      if (mean === null || mean === undefined) return;
      setText(byId("point"), new Date(x).toLocaleString() + ": " + digits(mean) +
        (least !== most ? " (" + digits(least) + " to " + digits(most) + ")" : ""));
    },
  };
  const known = rows.map(([, values]) => values).filter(([, mean]) => mean !== null);
  setText(byId("point"), known.length
    ? "from " + digits(Math.min(...known.map(([least]) => least))) + " to " +
      digits(Math.max(...known.map(([, , most]) => most)))
    : "The history has no values in this time.");
  byId("plot").setAttribute("aria-label", byId("field").value + " of " + state.opened + ": " + byId("point").textContent);
  if (state.plot) {
    state.plot.updateOptions(options);
  } else {
    state.plot = new Dygraph(byId("plot"), rows, options);
  }
  byId("plot").dataset.points = known.length;
}

function openDevice(name) {
  const known = state.site.get(name);
  state.opened = name;
  byId("list-view").hidden = true;
  byId("device-view").hidden = false;
  setText(byId("device-name"), name);
  const {device, line} = known;
  setText(byId("device-kind"), device.description + (device.address === null ? "" : " at address " + device.address) +
    (line.port ? " on " + line.port : ""));
  const numbers = device.fields.filter((field) => !field.text);
  byId("field").replaceChildren(...numbers.map((field) => {
    const option = element("option", "", field.field + (field.unit ? " (" + field.unit + ")" : ""));
    option.value = field.field;
    option.selected = field.field === device.shown;
    return option;
  }));
  const isCamera = CAMERAS.includes(device.kind);
  byId("plot-area").hidden = numbers.length === 0 || isCamera;
  byId("picture-area").hidden = !isCamera;
  byId("picture").hidden = true;
  byId("pictures").replaceChildren();
  delete byId("pictures").dataset.times;
  setText(byId("picture-time"), "");
  state.picture = null;
  showPictures();
  byId("record").replaceChildren();
  byId("failures").replaceChildren();
  showCondition();
  showRecord();
  if (state.plot) state.plot.destroy();
  state.plot = null;
  delete byId("plot").dataset.points;
  showPlot();
  showEvents(byId("failures"), "from=7d&limit=50&device=" + encodeURIComponent(name));
  byId("device-name").focus();
  scrollTo(0, 0);
}

function closeDevice() {
  const name = state.opened;
  state.opened = null;
  byId("device-view").hidden = true;
  byId("list-view").hidden = false;
  showAllEvents();
  if (name && state.devices.has(name)) state.devices.get(name).row.link.focus();
}

function showAllEvents() {
  showEvents(byId("events"), "from=24h&limit=30");
}

// What the address says: "#device=NAME", or nothing for the list.
function follow() {
  const match = /^#device=(.*)$/.exec(location.hash);
  let name = null;
  try {
    name = match ? decodeURIComponent(match[1]) : null;
  } catch {
    name = null;
  }
  if (name !== null && name === state.opened) {
    showCondition();
    showRecord();
    showPictures();
    showPlot();
  } else if (name !== null && state.site.has(name)) {
    openDevice(name);
  } else {
    closeDevice();
  }
}

// The service

function take(data, recent) {
  let device = state.devices.get(data.device);
  if (!device) {
    device = {data, recent: [], order: state.devices.size, row: makeRow(data.device)};
    state.devices.set(data.device, device);
  }
  if (recent) {
    device.recent = recent;
  } else if (data.polls !== device.data.polls) {
    device.recent.push(data.value && data.value.number !== undefined ? data.value.number : null);
    if (device.recent.length > RECENT_POLLS) device.recent.shift();
  }
  const changed = device.data.condition !== data.condition;
  device.data = data;
  device.arrived = Date.now();
  showRow(device);
  return changed;
}

function hear(list) {
  state.heard = Date.now();
  setLost(false);
  let changed = false;
  for (const data of list) changed = take(data) || changed;
  sortRows();
  showLines();
  showSummary();
  if (changed && !state.opened) setTimeout(showAllEvents, 1500);  // the history is written once a second
  if (state.opened && list.some((data) => data.device === state.opened)) {
    showCondition();
    showRecord();
    showPictures();
    if (changed) {
      setTimeout(() => state.opened &&
        showEvents(byId("failures"), "from=7d&limit=50&device=" + encodeURIComponent(state.opened)), 1500);
    }
  }
}

function setLost(lost) {
  if (lost === state.lost) return;
  state.lost = lost;
  document.body.classList.toggle("lost", lost);
  byId("lost").hidden = !lost;
  if (lost) {
    setText(byId("lost"), "The service has not been heard since " + new Date(state.heard).toLocaleTimeString() +
      ". What is shown here is old.");
  }
  showSummary();
}

let source = null;

function listen() {
  source = new EventSource("api/v1/follow");
  source.onmessage = (event) => hear(JSON.parse(event.data));
  source.addEventListener("alarms", () => {
    showAlarms();
    if (!state.opened) showAllEvents();
  });
  source.onerror = () => {
    source.close();
    setLost(true);
    setTimeout(begin, RECONNECT_MS);
  };
}

// From the start, and again after each loss: the service may have another site file by then.
async function begin() {
  try {
    const [site, devices] = await Promise.all([getJson("api/v1/site"), getJson("api/v1/devices")]);
    const names = new Set(devices.devices.map((data) => data.device));
    for (const [name, device] of state.devices) {
      if (names.has(name)) continue;
      device.row.row.remove();
      state.devices.delete(name);
    }
    state.site.clear();
    for (const line of site.lines) {
      for (const device of line.devices) state.site.set(device.device, {device, line});
    }
    if (state.version && state.version !== site.version) location.reload();  // it brings another page, too
    state.version = site.version;
    state.unit = site.unit;
    setText(byId("unit"), site.unit);
    for (const data of devices.devices) take(data, data.recent);
    hear([]);
    listen();
    follow();
  } catch {
    setLost(true);
    setTimeout(begin, RECONNECT_MS);
  }
}

// Ages grow, also while nothing comes.
setInterval(() => {
  if (source && Date.now() - state.heard > SILENCE_MS && !state.lost) {
    source.close();
    setLost(true);
    setTimeout(begin, RECONNECT_MS);
  }
  if (state.opened) {
    showCondition();
  } else {
    for (const alarm of state.alarms) {
      if (state.rows.has(alarm.alarm) && alarm.state !== "cleared") setText(state.rows.get(alarm.alarm).parts.state, alarmText(alarm));
    }
    for (const device of state.devices.values()) {
      setText(device.row.parts.state, conditionText(device.data, Date.now() - device.arrived));
    }
  }
}, 1000);

let plotTimer = 0;

function keepPlotFresh() {
  clearInterval(plotTimer);
  plotTimer = setInterval(() => {
    if (state.opened && !document.hidden) showPlot();
  }, RANGES[state.range].refresh);
}

byId("who").value = localStorage.getItem("who") ?? "";
byId("who").addEventListener("change", () => localStorage.setItem("who", byId("who").value));
byId("field").addEventListener("change", showPlot);
byId("ranges").addEventListener("click", (event) => {
  const range = event.target.dataset.range;
  if (!range) return;
  state.range = range;
  for (const button of byId("ranges").children) button.setAttribute("aria-pressed", button.dataset.range === range);
  keepPlotFresh();
  showPlot();
});
addEventListener("hashchange", follow);
addEventListener("keydown", (event) => {
  if (event.key === "Escape" && state.opened) location.hash = "";
  const step = {ArrowDown: 1, ArrowUp: -1}[event.key];
  if (!step || state.opened) return;
  const links = [...document.querySelectorAll("#devices a")];
  const next = links[links.indexOf(document.activeElement) + step];
  if (next && links.includes(document.activeElement)) {
    next.focus();
    event.preventDefault();
  }
});
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", showPlot);

// It would write styles into elements, which this page's security policy refuses; the line below the plot says what it would.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);
keepPlotFresh();
begin();
