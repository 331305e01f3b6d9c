#include "tools/zebdiag/report/PageStyle.h"

namespace zebdiag
{
const wchar_t kPageStyle[] = LR"(
:root {
  color-scheme: light dark;
  --page: #f3f5f7; --card: #ffffff; --line: #d5dae0; --room: #e6eaee;
  --text: #1b1f24; --soft: #545d67; --link: #0b57a4;
  --passed: #14692d; --failed: #a8141f; --stopped: #7a4a00; --running: #0b57a4; --none: #545d67;
  --good: #2f6fb3; --bad: #c0212c; --odd: #a56300;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --page: #14171a; --card: #1e2226; --line: #3a424a; --room: #30373e;
    --text: #e8eaed; --soft: #aab3bd; --link: #8cc2ff;
    --passed: #7ddb95; --failed: #ff9a97; --stopped: #f2c06b; --running: #8cc2ff; --none: #aab3bd;
    --good: #6aa9ea; --bad: #ff7d79; --odd: #e0a640;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.5rem 1rem 3rem; max-width: 60rem;
  background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, Segoe UI, Roboto, Noto Sans, Liberation Sans, sans-serif;
  overflow-wrap: anywhere;
}
h1, h2, h3, p, dl, ul, figure { margin: 0; padding: 0; }
h1 { font-size: 1.75rem; line-height: 1.2; }
h2 { font-size: 1.35rem; line-height: 1.3; margin-top: 2.5rem; }
h3 { font-size: 1rem; line-height: 1.4; }
a { color: var(--link); }
dt, .about, .device, .key, .times, .note, caption, figcaption, .number { color: var(--soft); }

.facts { display: flex; flex-wrap: wrap; gap: 0.5rem 2rem; margin-top: 1rem; }
.facts dt { font-size: 0.875rem; }
.facts dd { margin: 0; }

.verdict { margin-top: 2rem; font-size: 1.35rem; font-weight: 600; line-height: 1.3; }
.counts { display: flex; flex-wrap: wrap; gap: 0.5rem; margin-top: 0.75rem; list-style: none; }
.counts li {
  display: flex; align-items: center; gap: 0.5rem; padding: 0.25rem 0.75rem;
  background: var(--card); border: 1px solid var(--line); border-radius: 0.5rem;
}
.counts b { color: var(--text); font-variant-numeric: tabular-nums; }

.passed { --kind: var(--passed); }
.failed { --kind: var(--failed); }
.stopped { --kind: var(--stopped); }
.running { --kind: var(--running); }
.none { --kind: var(--none); }
.counts li, .state { color: var(--kind); }
.sign {
  flex: none; width: 0.9em; height: 0.9em; fill: none; stroke: currentColor; stroke-width: 2.5;
  stroke-linecap: round; stroke-linejoin: round;
}

.failures {
  margin-top: 1.5rem; padding: 1rem 1.25rem 1.25rem; background: var(--card);
  border: 1px solid var(--line); border-left: 0.3rem solid var(--failed); border-radius: 0.5rem;
}
.failures h2 { margin: 0; }
.failures h3 { margin-top: 0.75rem; }
.key { font: 0.8125rem/1.5 ui-monospace, Consolas, Liberation Mono, monospace; }

.test {
  margin-top: 0.75rem; padding: 0.75rem 1.25rem 1rem; background: var(--card);
  border: 1px solid var(--line); border-left: 0.3rem solid var(--kind); border-radius: 0.5rem;
}
.head { display: flex; flex-wrap: wrap; justify-content: space-between; gap: 0.25rem 1rem; }
.number { display: inline-block; min-width: 1.5em; font-weight: 400; }
.state { display: flex; align-items: center; gap: 0.4rem; font-weight: 600; }
.about, .times { font-size: 0.875rem; }
.finding { margin-top: 0.5rem; white-space: pre-line; }

.bars div { display: grid; grid-template-columns: repeat(2, minmax(0, 1fr)); gap: 0 1rem; margin-top: 0.25rem; }
figure, .values { margin-top: 0.75rem; font-size: 0.875rem; }
.bars dd { display: flex; align-items: center; gap: 0.75rem; margin: 0; }
.bars dd span { flex: none; min-width: 6.75em; text-align: right; font-variant-numeric: tabular-nums; }
.bar { flex: 1; width: 0; height: 0.75rem; }
.bar .room { fill: var(--room); }
.bar .good { fill: var(--good); }
.bar .bad { fill: var(--bad); }
.bar .odd { fill: var(--odd); }
.values div {
  display: flex; justify-content: space-between; gap: 1rem; padding: 0.2rem 0; border-top: 1px solid var(--line);
}
.values dd { flex: none; margin: 0; font-variant-numeric: tabular-nums; }

.settings { margin-top: 1rem; border-collapse: collapse; font-size: 0.875rem; overflow-wrap: normal; }
.settings caption { padding-bottom: 0.25rem; text-align: left; }
.settings th, .settings td {
  padding: 0.25rem 1.25rem 0.25rem 0; border-top: 1px solid var(--line); text-align: left; font-weight: 400;
}
.note { margin-top: 1.5rem; font-size: 0.875rem; }

@media (max-width: 36rem) {
  body { padding: 1rem 0.75rem 2rem; }
  h1 { font-size: 1.4rem; }
  .test, .failures { padding-left: 0.875rem; padding-right: 0.875rem; }
  .bars div { grid-template-columns: minmax(0, 1fr); }
  .settings th, .settings td { padding-right: 0.75rem; }
}
@media print {
  :root { color-scheme: light; font-size: 10pt; --page: #ffffff; }
  @page { margin: 15mm; }
  body { max-width: none; padding: 0 1px 0 0; }
  .test, h2, .failures h3, .failures p, .counts { break-inside: avoid; }
  h1, h2, h3 { break-after: avoid; }
  .test, .failures, .counts li { border-radius: 0; }
  .bar { print-color-adjust: exact; }
  a { color: inherit; text-decoration: none; }
}
)";
} // namespace zebdiag
