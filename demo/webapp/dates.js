const day = new Intl.DateTimeFormat(undefined, {day: "numeric", month: "short"});
const dayAndYear = new Intl.DateTimeFormat(undefined, {day: "numeric", month: "short", year: "numeric"});
const full = new Intl.DateTimeFormat(undefined, {dateStyle: "medium", timeStyle: "short"});
const clock = new Intl.DateTimeFormat(undefined, {timeStyle: "short"});

/** As short as the list wants it. */
export function shortDate(iso, now = new Date()) {
  const date = new Date(iso);
  if (date.toDateString() === now.toDateString()) {
    return clock.format(date);
  }
  return (date.getFullYear() === now.getFullYear() ? day : dayAndYear).format(date);
}

export const fullDate = (iso) => full.format(new Date(iso));
