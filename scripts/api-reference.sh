#!/usr/bin/env bash
# Writes docs/api.md from the comments of the public header. With --check: writes nothing, fails if it is out of date.
set -euo pipefail
cd "$(dirname "$0")/.."

reference() {
  awk '
    # An entry is a comment and the declarations up to the next comment that starts a line.
    function flush_entry(   i, title) {
      sub(/\n+$/, "", code)
      if (doc != "" || code != "") {
        title = name
        if (title == "" && match(code, /orv[A-Za-z]*_?[A-Za-z0-9_]*\(/))
          title = substr(code, RSTART, RLENGTH - 1)
        else if (title == "" && match(code, /(Orv[A-Za-z]+);/))
          title = substr(code, RSTART, RLENGTH - 1)
        if (title != "")
          printf "\n### %s\n", title
        printf "\n%s", doc
        if (code != "")
          printf "\n```c\n%s\n```\n", code
      }
      doc = code = name = ""
      tag = 0
    }

    # One line of a comment, its frame removed.
    function add_line(line) {
      if (line ~ /^@file/ || line ~ /^@[{}]/)
        return
      if (line ~ /^@name /) {
        name = substr(line, 7)
        return
      }
      if (line ~ /^@param +/) {
        sub(/^@param +/, "", line)
        names = line
        sub(/ .*/, "", names)
        sub(/^[^ ]+ +/, "", line)
        gsub(/,/, "`, `", names)
        line = "- `" names "`: " line
        if (tag != 1)
          doc = doc "\n"
        tag = 1
      } else if (line ~ /^@return/) {
        sub(/^@return */, "", line)
        line = "\nReturns " line
        tag = 2
      } else if (tag) {
        sub(/^ +/, "", line)
        line = (tag == 1 ? "  " : "") line
      }
      if (line !~ /^    /)
        gsub(/</, "\\&lt;", line)
      doc = doc line "\n"
    }

    BEGIN {
      print "# API reference"
      print ""
      print "<!-- Written by scripts/api-reference.sh from include/orvcv.h. Edit the header, not this file. -->"
    }

    /^\/\* -+ .* \*\/$/ {
      flush_entry()
      title = $0
      sub(/^\/\* -+ /, "", title)
      sub(/ \*\/$/, "", title)
      section = title
      next
    }
    /^\/\*\* @} \*\/$/ { flush_entry(); next }
    /^\/\*\*/ {
      flush_entry()
      if (section != "") {
        printf "\n## %s\n", section
        section = ""
      }
      line = $0
      sub(/^\/\*\* ?/, "", line)
      in_doc = line !~ /\*\/$/
      sub(/ *\*\/$/, "", line)
      if (line != "")
        add_line(line)
      next
    }
    in_doc {
      line = $0
      in_doc = line !~ /\*\/$/
      if (line ~ /^ *\*\/$/)
        next
      sub(/ *\*\/$/, "", line)
      sub(/^ \* ?/, "", line)
      add_line(line)
      next
    }
    /^\/\*/ { in_note = 1 }
    in_note { if (/\*\/$/) in_note = 0; next }
    /^#define ORVCV_TYPES$/ { section = "Types and values" }
    /^#/ || /^extern "C"/ || /^} \/\*/ { next }
    {
      # What follows the linkage macro moves left with it.
      if (sub(/^ORV_API /, ""))
        moved = 1
      else if (moved)
        sub(/^        /, "")
      if (/;$/)
        moved = 0
      if ($0 != "" || code != "")
        code = code $0 "\n"
    }
    END { flush_entry() }
  ' include/orvcv.h
}

if [ "${1:-}" = --check ]; then
  if ! diff -u docs/api.md <(reference); then
    echo "docs/api.md is out of date: run scripts/api-reference.sh" >&2
    exit 1
  fi
else
  reference >docs/api.md
fi
