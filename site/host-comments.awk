# Makes the comments of host/ readable for Doxygen: a comment describes all declarations that follow it without a blank line.
/^ *\/\/ / || /^ *\/\/$/ {
  if (!commenting) comment = ""
  commenting = 1
  line = $0
  sub(/\/\//, "///", line)
  comment = comment line "\n"
  next
}
{
  declares = /;|\{|^template|^#define/ && !/^#(if|ifndef|endif|include)/
  if (/^$/ || /^ *(public|protected|private):/) {
    if (commenting) printf "%s\n", comment
    comment = ""
  } else if (comment != "" && (commenting || declares)) {
    printf "%s", comment
    if (match($0, /\/\* *[0-9]+ \*\//)) printf "  ///\n  /// Slot %d.\n", substr($0, RSTART + 2)
  } else if (match($0, /\/\* *[0-9]+ \*\//)) {
    printf "  /// Slot %d.\n", substr($0, RSTART + 2)
  }
  commenting = 0
  # What stands behind a declaration is about it alone.
  if (match($0, /;  \/\/ /)) $0 = substr($0, 1, RSTART) "  ///< " substr($0, RSTART + RLENGTH)
  print
  if (/\{$|^ *\}|^ *template/) comment = ""
}
