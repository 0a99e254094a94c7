# SPDX-License-Identifier: Apache-2.0
# Makes the table of docs/performance.md of what ./dev bench prints: ./dev bench | awk -f bench/table.awk
function shown(text) {
  if (text == "") return ""
  return text >= 1000 ? sprintf("%.0f", text) : sprintf("%.3g", text)
}
# The first of a figure's companions that is there; the companions of its bare name stand below it, the others beside.
function companion(figure, suffix) {
  if ((figure "/" suffix) in value) return value[figure "/" suffix]
  return value[figure "_" suffix]
}

/^\{"bench":/ {
  split($0, part, "\"")
  name = part[4]
  if (!(name in value)) order[++count] = name
  value[name] = substr(part[7], 2) + 0
  unit[name] = part[10]
}

END {
  print "| figure | unit | value | limit | times the limit | part of the limit |"
  print "|---|---|---:|---:|---:|---:|"
  for (i = 1; i <= count; i++) {
    name = order[i]
    if (name ~ /[\/_](limit|times_limit|part_of_limit)$/) continue
    printf "| %s | %s | %s | %s | %s | %s |\n", name, unit[name] == "1" ? "" : unit[name], shown(value[name]),
      shown(companion(name, "limit")), shown(companion(name, "times_limit")), shown(companion(name, "part_of_limit"))
  }
}
