// The data of the page: the sets, the oldest first, and rows of their contents. A row is an array that describes one
// entry: an item, a record, or a key or value of the registry. The row begins with the elements that are the same in
// all sets. Then come runs, the newest first. A run is a range of sets in which the entry has the same state.

const data = JSON.parse(byId("data").textContent);
const sets = data.sets;

const Kinds = { 1: "File", 2: "Database", 3: "Registry" };
const kindName = kind => Kinds[kind] ?? `Kind ${kind}`;

const Contacts = 24, Appointments = 25, Tasks = 26; // types of databases

// Where the runs of a row begin, and how long each one is. A run begins with its first and its last set.
const ItemRuns = { start: 2, width: 6 };
const RecordRuns = { start: 2, width: 2 };
const ValueRuns = { start: 2, width: 3 };

// Returns the offset in the row at which the run with this set begins, or -1 if the set doesn't have the entry.
function runAt(row, { start, width }, set) {
  for (let at = start; at < row.length && row[at + 1] >= set; at += width)
    if (row[at] <= set) return at;
  return -1;
}

// Names are compared and searched without regard to case.
const lowNames = data.items.map(row => row[1].toLowerCase());

function itemAt(number, at) {
  const row = data.items[number];
  const [content, bytes, packed, fault] = row.slice(at + 2, at + 6);
  return { number, name: row[1], low: lowNames[number], kind: row[0], since: row[at], content, bytes, packed, fault: fault || "" };
}

function itemsOf(set) {
  const items = [];
  for (let number = 0; number < data.items.length; number++) {
    const at = runAt(data.items[number], ItemRuns, set);
    if (at >= 0) items.push(itemAt(number, at));
  }
  return items.sort((left, right) => left.kind - right.kind); // as in a set; rows that the newest set lacks are last in the data
}

function recordsOf(set) {
  return data.records.filter(row => runAt(row, RecordRuns, set) >= 0).map(recordFrom);
}

// A record with its fields by name.
function recordFrom(row) {
  const [name, type] = data.databases[row[0]];
  const fields = new Map();
  for (let at = 0; at < row[1].length; at += 2) fields.set(data.properties[row[1][at]], row[1][at + 1]);
  return { row, database: name, type, fields, title: titleOf(fields, type) };
}

function titleOf(fields, type) {
  const text = name => fields.get(name) ?? "";
  if (type !== Contacts) return text("Subject") || "Record without a subject";
  return [text("FirstName"), text("LastName")].filter(Boolean).join(" ") || text("Company") || "Contact without a name";
}

function valuesOf(set) {
  return data.values.filter(row => runAt(row, ValueRuns, set) >= 0);
}

// If several sets have the same minute, their names contain the names of their files.
const timesOfDate = new Map();
for (const { date } of sets) timesOfDate.set(date, (timesOfDate.get(date) ?? 0) + 1);
const setNames = sets.map(({ date, path }) => timesOfDate.get(date) === 1 ? date : `${date} (${path.split("/").pop()})`);
const setName = set => setNames[set];
const isDamaged = set => set.damaged > 0 || set.faults.length > 0;

// How many items each set has added, changed and removed since the one before it.
function countChanges() {
  const counts = sets.map(() => ({ added: 0, changed: 0, removed: 0 }));
  for (const row of data.items) {
    let newer = null;
    for (let at = row.length - ItemRuns.width; at >= ItemRuns.start; at -= ItemRuns.width) { // the oldest first
      const run = { first: row[at], last: row[at + 1], content: row[at + 2] };
      if (newer && newer.last + 1 < run.first) counts[newer.last + 1].removed++;
      if (newer && newer.last + 1 === run.first) counts[run.first].changed += newer.content !== run.content ? 1 : 0;
      else counts[run.first].added++;
      newer = run;
    }
    if (newer.last + 1 < sets.length) counts[newer.last + 1].removed++;
  }
  return counts;
}

// Whether the page has all items of the set.
const hasItems = set => set >= data.itemsFrom;
