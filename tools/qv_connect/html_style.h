// The style of the report's page, light and dark by the reader's own setting.
//
// Threads: a constant.
#ifndef TOOLS_QV_CONNECT_HTML_STYLE_H
#define TOOLS_QV_CONNECT_HTML_STYLE_H

namespace qv_connect {

inline constexpr const char* kPageStyle = R"(
:root { color-scheme: light dark; --page: #f4f5f7; --card: #fff; --text: #1b1f24; --soft: #57606a; --line: #d8dce1;
  --bar: #3b73b9; --track: #eceff3; --slow: #a84300; --slow-stripe: #d9732a; --bad: #b3261e; --bad-stripe: #e0756f;
  --good: #1a6b37; }
@media (prefers-color-scheme: dark) {
  :root { --page: #111418; --card: #1a1f25; --text: #e6e9ec; --soft: #a3adb8; --line: #343c46; --bar: #6aa3e8;
    --track: #272e36; --slow: #f2a65a; --slow-stripe: #b26a22; --bad: #ff8f86; --bad-stripe: #a9473f; --good: #74cf93; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 2rem 1rem 3rem; max-width: 62rem; background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere; }
h1 { margin: 0; font-size: 1.6rem; line-height: 1.25; }
h2 { margin: 0; font-size: 1.15rem; }
h3 { margin: 1.25rem 0 .25rem; font-size: 1rem; }
p { margin: .25rem 0; }
a { color: inherit; text-underline-offset: .2em; }
section { margin-top: 1.25rem; padding: 1.1rem 1.25rem 1.25rem; background: var(--card); border: 1px solid var(--line);
  border-radius: .6rem; }
section.this { border-color: var(--bar); box-shadow: inset .3rem 0 var(--bar); }
.soft { color: var(--soft); font-size: .9rem; }
.verdict { font-size: 1.05rem; }
.good { color: var(--good); } .slow { color: var(--slow); } .bad { color: var(--bad); }
ol { margin: .75rem 0 0; padding: 0; list-style: none; }
ol > li { display: grid; grid-template-columns: 17rem 1fr 5.5rem 7.5rem; grid-template-areas: "name track ms change";
  gap: 0 .9rem; align-items: center; padding: .3rem 0; border-top: 1px solid var(--line); }
.name { grid-area: name; } .ms { grid-area: ms; text-align: right; font-variant-numeric: tabular-nums; }
.change { grid-area: change; text-align: right; font-size: .9rem; }
.track { grid-area: track; position: relative; height: 1rem; background: var(--track); border-radius: .2rem; }
.bar { position: absolute; top: 0; height: 100%; min-width: 2px; background: var(--bar); border-radius: .15rem;
  forced-color-adjust: none; print-color-adjust: exact; }
.slowest .bar { background: repeating-linear-gradient(-45deg, var(--slow) 0 5px, var(--slow-stripe) 5px 8px); }
.ended .bar { background: repeating-linear-gradient(45deg, var(--bad) 0 5px, var(--bad-stripe) 5px 8px); }
.slowest .name, .slowest .ms { font-weight: 650; }
.none { grid-column: track-start / change-end; } .unreached { color: var(--soft); }
.mark { display: inline-block; padding: 0 .4rem; border: 1px solid currentColor; border-radius: .3rem;
  font-size: .78rem; font-weight: 650; }
dt { margin-top: .6rem; font-weight: 650; } dd { margin: 0; } ul { margin: .25rem 0 0; padding-left: 1.2rem; }
@media (max-width: 46rem) {
  body { padding: 1.25rem .6rem 2rem; } section { padding: .9rem; }
  ol > li { grid-template-columns: 1fr 7.2rem; grid-template-areas: "name ms" "track change"; }
  .none { grid-area: track; } .failed .name { grid-column: name-start / ms-end; }
}
@media print { body { background: none; max-width: none; } section { break-inside: avoid; } }
)";

}  // namespace qv_connect

#endif
