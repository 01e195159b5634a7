// Everything that a report says goes onto the page as text, never as markup: a report may come from
// any program on this computer.

const MOST_REPORTS = 50;
const RETRY_MILLISECONDS = 3000;

const part = (id) => document.getElementById(id);
const choices = part("choices");

function chosen(name) {
  return new FormData(choices).get(name);
}

function newSessionId() {
  return String(crypto.getRandomValues(new Uint32Array(1))[0]);
}

// The link

function portalAddress() {
  const session = encodeURIComponent(chosen("session"));
  return `${location.origin}/report?answer=${chosen("answer")}&session_id=${session}`;
}

function linkText() {
  return `${chosen("scheme")}://join?portalURI=${encodeURIComponent(portalAddress())}`;
}

function shellQuoted(text) {
  return `'${text.replaceAll("'", "'\\''")}'`;
}

function curlText() {
  const report = {
    appName: "Brelto Orvanta 3.22.1",
    appVersion: "3.22.1.70.2",
    isMeetMeOnly: false,
    meetmeCapable: 1,
    videoCapable: 1,
    SIPready: 0,
  };
  const session = encodeURIComponent(chosen("session"));
  const fields = [`data=${JSON.stringify(report)}`, `session_id=${session}`, "command=set_data"];
  const options = fields.map((field) => `  --data-urlencode ${shellQuoted(field)}`);
  return ["curl", ...options, `  ${shellQuoted(portalAddress())}`].join(" \\\n");
}

function sessionHint() {
  const session = chosen("session");
  if (session === "") {
    return "Without a session id the agent sends nothing.";
  }
  const sent = encodeURIComponent(session);
  return sent === session ? "" : `Arrives as ${sent}: the agent undoes the escapes of a link once.`;
}

function showLink() {
  const link = linkText();
  part("open").href = link;
  part("link").textContent = link;
  part("curl").textContent = curlText();
  part("outcome").textContent = choices.querySelector("[name=answer]:checked").dataset.log;
  const hint = sessionHint();
  if (part("session-hint").textContent !== hint) {
    part("session-hint").textContent = hint;
  }
}

async function copy(button) {
  const before = button.textContent;
  try {
    await navigator.clipboard.writeText(part(button.dataset.copies).textContent);
    button.textContent = "Copied";
  } catch {
    getSelection().selectAllChildren(part(button.dataset.copies));
    button.textContent = "Selected";
  }
  say(button.textContent);
  setTimeout(() => {
    button.textContent = before;
  }, 2000);
}

// The reports

function say(text) {
  part("news").textContent = text;
}

function addFact(list, name, value) {
  const term = document.createElement("dt");
  term.textContent = name;
  const description = document.createElement("dd");
  description.textContent = value;
  list.append(term, description);
}

function fieldOf(report, name) {
  return report.fields.find(([key]) => key === name)?.[1];
}

// The members of the report's JSON object; nothing when the data is none.
function clientFacts(report) {
  try {
    const client = JSON.parse(fieldOf(report, "data"));
    const isObject = typeof client === "object" && client !== null && !Array.isArray(client);
    return isObject ? Object.entries(client) : [];
  } catch {
    return [];
  }
}

function plain(value) {
  return typeof value === "string" ? value : JSON.stringify(value);
}

function fillClient(list, report) {
  for (const [name, value] of clientFacts(report)) {
    addFact(list, name, plain(value));
  }
  if (list.childElementCount === 0) {
    addFact(list, "data", "holds no JSON object");
  }
}

function reportItem(report) {
  const item = part("report").content.firstElementChild.cloneNode(true);
  const slot = (selector) => item.querySelector(selector);
  slot(".session").textContent = `Session ${fieldOf(report, "session_id") ?? "unknown"}`;
  slot(".badge").textContent = `Answer: ${report.answer}`;
  slot(".badge").dataset.good = report.successful;
  slot("time").dateTime = report.time;
  slot("time").textContent = new Date(report.time).toLocaleTimeString();
  fillClient(slot(".client"), report);
  for (const [name, value] of report.fields) {
    addFact(slot(".fields"), name, value);
  }
  if (report.fields.length === 0) {
    addFact(slot(".fields"), "none", "");
  }
  slot(".body").textContent = report.body;
  const headers = report.headers.map(([name, value]) => `${name}: ${value}`);
  slot(".request").textContent = [`${report.method} ${report.target}`, ...headers].join("\n");
  return item;
}

function showCount() {
  const count = part("list").childElementCount;
  part("count").textContent = count;
  part("empty").hidden = count !== 0;
  part("clear").hidden = count === 0;
}

function showReport(report) {
  const list = part("list");
  const item = reportItem(report);
  item.classList.add("new");
  list.prepend(item);
  while (list.childElementCount > MOST_REPORTS) {
    list.lastElementChild.remove();
  }
  showCount();
  say(`${item.querySelector(".session").textContent} has arrived.`);
}

function showState(state, text) {
  part("state").dataset.state = state;
  part("state").textContent = text;
}

// A new stream begins with the reports that the portal has kept.
function listen() {
  part("list").replaceChildren();
  showCount();
  const source = new EventSource("/events");
  source.addEventListener("open", () => showState("open", "Listening"));
  source.addEventListener("report", (event) => showReport(JSON.parse(event.data)));
  source.addEventListener("error", () => {
    showState("lost", "No connection, trying again");
    if (source.readyState === EventSource.CLOSED) {
      setTimeout(listen, RETRY_MILLISECONDS);
    }
  });
}

choices.addEventListener("input", showLink);
choices.addEventListener("submit", (event) => event.preventDefault());
part("new-session").addEventListener("click", () => {
  part("session").value = newSessionId();
  showLink();
});
part("clear").addEventListener("click", () => {
  part("list").replaceChildren();
  showCount();
  say("The list is empty.");
  part("reports").focus();
});
for (const button of document.querySelectorAll("[data-copies]")) {
  button.addEventListener("click", () => copy(button));
}

if (part("session").value === "") {
  part("session").value = newSessionId();
}
showLink();
listen();
