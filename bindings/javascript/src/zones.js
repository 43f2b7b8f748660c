// Time zones from the platform, which every browser and server brings along.

const DAY = 86400;
const CYCLE = BigInt(146097 * DAY); // the calendar repeats after 400 years, weekdays too
const LAST = 100_000_000_000; // the platform's dates end some time behind it
const FIRST = -8_640_000_000_000; // where they begin
const MOST_DAYS = 4096;
const MOST_ZONES = 1024;

const zones = new Map();

class Zone {
  constructor(name) {
    this.format = new Intl.DateTimeFormat('en-US', { timeZone: name, timeZoneName: 'longOffset' });
    this.days = new Map(); // offsets of whole days
  }

  // The platform writes "GMT", "GMT-05:00" or "GMT-00:44:30".
  ask(time) {
    const found = /GMT(?:([-+\u2212])(\d+):(\d\d)(?::(\d\d))?)?$/.exec(this.format.format(time * 1000));
    const [, sign, hours = '0', minutes = '0', seconds = '0'] = found;
    const offset = Number(hours) * 3600 + Number(minutes) * 60 + Number(seconds);
    return sign === undefined || sign === '+' ? offset : -offset;
  }

  // Asking takes longer than all else of a receipt, so a day on which clocks do not change is asked
  // for once. No zone has ever changed its clocks and changed them back within a day.
  offset(time) {
    const day = Math.floor(time / DAY);
    const known = this.days.get(day);
    if (known !== undefined) return known;
    const first = this.ask(day * DAY);
    if (first !== this.ask(day * DAY + DAY)) return this.ask(time);
    if (this.days.size >= MOST_DAYS) this.days.clear();
    this.days.set(day, first);
    return first;
  }
}

function find(name) {
  let zone = zones.get(name);
  if (zone === undefined) {
    if (!/^[A-Za-z][\w+/-]*$/.test(name)) return undefined;
    try {
      zone = new Zone(name);
    } catch {
      return undefined;
    }
    if (zones.size >= MOST_ZONES) zones.clear();
    zones.set(name, zone);
  }
  return zone;
}

export function isZone(name) {
  return find(name) !== undefined;
}

// The seconds by which clocks in the zone, for "" the platform's own, are ahead of UTC at a time in
// seconds since 1970, a BigInt; undefined for a zone that the platform does not know.
export function offsetOf(name, time) {
  let near = Number(time);
  if (near > LAST) near = Number((time % CYCLE) + CYCLE); // by the rules to come, not those of the past
  if (near < FIRST) near = FIRST;
  if (name === '') return Math.round(new Date(near * 1000).getTimezoneOffset() * -60);
  return find(name)?.offset(near);
}
