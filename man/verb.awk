# From the help of a verb to scdoc: its usage becomes a heading, options become entries, and what is
# indented is shown as it stands.

function escaped(text) {
  gsub(/[\\*_~|#<>`\[\]]/, "\\\\&", text)
  sub(/^-/, "\\-", text)
  return text
}

function leaveBlock() {
  if (inBlock) print "```\n"
  inBlock = 0
}

/^Usage:$/ { part = "usage"; next }
part == "usage" && /^  / { sub(/^ +/, ""); gsub(/…/, "..."); printf "## %s\n\n", $0; part = "text"; next }
/^Options:$/ { leaveBlock(); part = "options"; next }

part == "options" && /^  -/ {
  sub(/^  /, "")
  name = $0
  sub(/  .*/, "", name)
  about = substr($0, length(name) + 1)
  sub(/^ +/, "", about)
  printf "*%s*\n\t%s\n\n", escaped(name), escaped(about)
  next
}
part == "options" && /^$/ { part = "text"; next }

/^  / {
  if (!inBlock) print "\n```"
  inBlock = 1
  print substr($0, 3)
  next
}

{
  leaveBlock()
  sub(/^ +/, "")
  print escaped($0)
}

END { leaveBlock(); print "" }
