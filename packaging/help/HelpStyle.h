#pragma once

#include <QLatin1StringView>

namespace runebook {

/// The style sheet of every page of the help. Colours stand in the last two rules only, so that a viewer
/// without media queries shows the text in colours of its own.
inline QLatin1StringView helpStyle()
{
    return QLatin1StringView(R"(:root { color-scheme: light dark; }
body { font: 16px/1.55 system-ui, sans-serif; max-width: 46rem; margin: 0 auto; padding: 1.5rem; }
h1, h2, h3 { line-height: 1.25; margin: 2rem 0 0.6rem; }
h1 { margin-top: 0.5rem; }
code, pre { font-family: ui-monospace, monospace; font-size: 0.9em; }
pre { overflow-x: auto; padding: 0.8rem 1rem; border-radius: 6px; }
pre code { font-size: 1em; }
table { border-collapse: collapse; }
th, td { text-align: left; vertical-align: top; padding: 0.35rem 0.8rem 0.35rem 0; }
nav ul { list-style: none; padding: 0; }
nav .level3 { padding-left: 1.2rem; }
nav a { display: inline-block; padding: 0.1rem 0; }
@media (min-width: 72rem) {
  nav { position: fixed; top: 1.5rem; left: 1.5rem; width: 12rem; }
}
@media (prefers-color-scheme: light) {
  body { color: #23282d; background: #ffffff; }
  pre, :not(pre) > code { background: #f2f4f5; }
  th, td { border-bottom: 1px solid #d9dee1; }
  a { color: #1b6475; }
}
@media (prefers-color-scheme: dark) {
  body { color: #dfe3e6; background: #1e2124; }
  pre, :not(pre) > code { background: #2a2e32; }
  th, td { border-bottom: 1px solid #3d4348; }
  a { color: #6cc3d2; }
}
)");
}

} // namespace runebook
