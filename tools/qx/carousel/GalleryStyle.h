#pragma once

namespace qx {

// How a gallery's page looks: light or dark as its reader has it, and on paper.
inline constexpr char kGalleryStyle[] = R"css(
:root {
  --page: #f6f6f9; --sheet: #ffffff; --ink: #1c1c1e; --soft: #62626a; --line: #e1e1e8; --accent: #0b62d6;
  --error: #b3261e; --error-back: #fdeceb; --warning: #8a5200; --warning-back: #fff4e0;
  --good: #1b6e3c; --good-back: #e6f5eb;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #0e0e11; --sheet: #18181c; --ink: #f2f2f5; --soft: #a0a0aa; --line: #2e2e35; --accent: #6cabff;
    --error: #ff8a80; --error-back: #3a1a19; --warning: #ffc163; --warning-back: #352813;
    --good: #7fd6a0; --good-back: #16301f;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 48px 32px; max-width: 1720px; background: var(--page); color: var(--ink);
  font: 16px/1.5 system-ui, "Segoe UI", Roboto, "Noto Sans", sans-serif;
  -webkit-font-smoothing: antialiased; text-rendering: optimizeLegibility;
}
h1, h2, h3, h4, p, dl, dd, ul, ol, figure { margin: 0; padding: 0; }
ul, ol { list-style: none; }
a { color: inherit; text-decoration: none; }
[dir="auto"] { text-align: left; }
a:hover .name { text-decoration: underline; }
code { font: 0.875em/1.4 ui-monospace, "SF Mono", "Roboto Mono", "Noto Sans Mono", monospace; overflow-wrap: anywhere; }
.kicker, .file { color: var(--soft); font-size: 14px; }
.kicker { color: var(--accent); font-weight: 600; letter-spacing: 0.02em; }
h1 { font-size: 40px; line-height: 1.15; letter-spacing: -0.02em; text-wrap: balance; }
h2 { font-size: 28px; line-height: 1.2; letter-spacing: -0.015em; text-wrap: balance; }
h3 { font-size: 18px; line-height: 1.3; }
h4 { margin: 28px 0 10px; font-size: 14px; color: var(--soft); font-weight: 600; }
header.page { margin-bottom: 40px; }
.chips { display: flex; flex-wrap: wrap; gap: 8px; margin-top: 14px; }
.chip {
  display: inline-block; padding: 2px 12px; border-radius: 999px; font-size: 14px; font-weight: 500;
  background: var(--sheet); box-shadow: inset 0 0 0 1px var(--line); color: var(--soft); white-space: nowrap;
}
.chip.error { background: var(--error-back); color: var(--error); box-shadow: none; }
.chip.warning { background: var(--warning-back); color: var(--warning); box-shadow: none; }
.chip.good { background: var(--good-back); color: var(--good); box-shadow: none; }
nav ol { margin-top: 28px; border-top: 1px solid var(--line); max-width: 900px; }
nav li { display: flex; justify-content: space-between; align-items: center; gap: 24px; }
nav ol > li { padding: 12px 0; border-bottom: 1px solid var(--line); }
nav .chips { margin: 0; flex: none; }
nav a .name { display: block; font-weight: 600; }
article {
  margin-bottom: 40px; padding: 36px 40px 40px; border-radius: 24px; background: var(--sheet);
  box-shadow: 0 0 0 1px var(--line);
}
article > header .body { max-width: 70ch; margin-top: 6px; color: var(--soft); }
.facts { display: grid; grid-template-columns: 3fr 2fr; gap: 24px 56px; margin: 32px 0 8px; }
.facts h3 { margin-bottom: 12px; }
.none { color: var(--soft); }
.findings li { padding: 12px 16px; border-radius: 12px; margin-bottom: 8px; font-size: 15px; }
.findings li.error { background: var(--error-back); }
.findings li.warning { background: var(--warning-back); }
.tag { font-weight: 600; margin-inline-end: 4px; }
.error .tag { color: var(--error); }
.warning .tag { color: var(--warning); }
.line { color: var(--soft); font-size: 14px; margin-inline-start: 6px; }
.hint { color: var(--soft); }
.message::first-letter, .hint::first-letter { text-transform: uppercase; }
table { width: 100%; border-collapse: collapse; font-size: 15px; font-variant-numeric: tabular-nums; }
th { width: 1%; text-align: start; font-weight: 400; padding: 5px 16px 5px 0; white-space: nowrap; }
thead th { color: var(--soft); font-size: 14px; }
th:last-child, td:last-child { text-align: end; padding-right: 0; width: 1%; }
tbody tr, tfoot tr { border-top: 1px solid var(--line); }
tfoot th, tfoot td:last-child { font-weight: 600; }
td { white-space: nowrap; }
.of { color: var(--soft); font-weight: 400; }
.bar { width: 100%; padding-right: 20px; }
.bar div { height: 8px; border-radius: 4px; background: var(--line); overflow: hidden; }
.bar span { display: block; min-width: 3px; height: 100%; border-radius: 4px; background: var(--accent); }
.bar div, .bar span { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
.over span { background: var(--error); }
.unseen { position: absolute; clip-path: inset(50%); }
.panel { margin-top: 40px; padding-top: 32px; border-top: 1px solid var(--line); }
.panel h3 { display: flex; align-items: center; flex-wrap: wrap; gap: 8px 12px; font-size: 21px; letter-spacing: -0.01em; }
.panel h3 .chip { letter-spacing: 0; }
.number {
  flex: none; width: 32px; height: 32px; border-radius: 50%; background: var(--ink); color: var(--sheet);
  font-size: 15px; line-height: 32px; text-align: center; font-variant-numeric: tabular-nums; letter-spacing: 0;
  print-color-adjust: exact; -webkit-print-color-adjust: exact;
}
.untitled { color: var(--soft); font-weight: 400; }
.panel dl { display: flex; flex-wrap: wrap; gap: 10px 48px; margin-top: 14px; font-size: 15px; }
dt { color: var(--soft); font-size: 14px; }
dd { overflow-wrap: anywhere; max-width: 60ch; }
.row { display: grid; grid-template-columns: 430fr 430fr 320fr 320fr; gap: 20px; align-items: start; }
img { display: block; width: 100%; height: auto; border-radius: 16px; box-shadow: 0 0 0 1px var(--line); }
figcaption { margin-top: 8px; color: var(--soft); font-size: 14px; text-align: center; }
.collapsed {
  margin-top: 32px; padding: 40px; border: 1.5px dashed var(--line); border-radius: 16px; color: var(--soft);
  text-align: center;
}
footer { color: var(--soft); font-size: 14px; }
.approval { display: none; }
@media (max-width: 1000px) {
  body { padding: 24px 16px; }
  article { padding: 24px 20px; border-radius: 20px; }
  .facts { grid-template-columns: minmax(0, 1fr); }
  .row { grid-template-columns: minmax(0, 1fr) minmax(0, 1fr); }
  .row img[width="320"] { width: calc(100% * 320 / 430); margin: 0 auto; }
  h1 { font-size: 32px; }
}
@page { size: A4 landscape; margin: 12mm; }
@media print {
  :root {
    --page: #ffffff; --sheet: #ffffff; --ink: #1c1c1e; --soft: #55555c; --line: #d8d8e0; --accent: #0b62d6;
    --error: #b3261e; --error-back: #ffffff; --warning: #8a5200; --warning-back: #ffffff;
    --good: #1b6e3c; --good-back: #ffffff;
  }
  body { padding: 0; font-size: 12px; max-width: none; }
  h1 { font-size: 28px; }
  h2 { font-size: 22px; }
  h3, .panel h3 { font-size: 15px; }
  h4 { margin: 12px 0 6px; }
  h4, dt, table, thead th, .chip, .file, .kicker, .line, .panel dl, .findings li, footer { font-size: 11px; }
  header.page { margin-bottom: 24px; }
  nav ol { margin-top: 16px; max-width: none; }
  nav ol > li { padding: 6px 0; }
  .facts { grid-template-columns: 3fr 2fr; gap: 12px 36px; margin: 16px 0 0; }
  .findings li { padding: 8px 12px; margin-bottom: 6px; }
  th { padding: 3px 12px 3px 0; }
  .number { width: 24px; height: 24px; line-height: 24px; font-size: 12px; }
  figcaption { margin-top: 3px; font-size: 10px; }
  article { padding: 0; border-radius: 0; box-shadow: none; break-before: page; }
  article:first-child { break-before: auto; }
  h2, h3, h4, .panel dl { break-after: avoid; }
  .row, figure, .findings li, tr { break-inside: avoid; }
  .row { display: flex; gap: 8mm; }
  .panel { break-before: page; border-top: 0; margin-top: 0; padding-top: 0; }
  .findings li, .chip { box-shadow: inset 0 0 0 1px var(--line); }
  .row img { width: 48mm; border-radius: 10px; print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  .row img[width="320"] { width: calc(48mm * 320 / 430); }
  .approval { display: grid; grid-template-columns: 2fr 1fr 3fr; gap: 12mm; margin: 16mm 0 8mm; }
  .approval dd { height: 12mm; border-bottom: 1px solid var(--ink); }
}
)css";

}  // namespace qx
