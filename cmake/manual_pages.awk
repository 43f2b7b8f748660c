# A manual page for each function of a header, made from its declaration and the comment above,
# after that of its section (one by itself) where this says more than a title:
# awk -v folder=FOLDER -v see=PAGE -f manual_pages.awk HEADER

function escaped(text) {
  gsub(/\\/, "\\e", text)
  gsub(/-/, "\\-", text)
  return text ~ /^[.']/ ? "\\&" text : text
}

# Ends the argument or the example that the comment is in, and begins another or a paragraph.
function begin(next_shape) {
  if (shape == "example")
    comment = comment ".fi\n.RE\n"
  if (next_shape == "example")
    comment = comment ".RS\n.nf\n"
  else if (next_shape == "paragraph" && comment != "")
    comment = comment ".PP\n"
  shape = next_shape
}

# An argument is indented by two, its name apart from what it is, and examples by four.
function add_line(line) {
  if (match(line, /^  [^ ]+( [^ ]+)*  /)) {
    begin("argument")
    comment = comment ".TP\n.I " escaped(substr(line, 3, RLENGTH - 4)) "\n"
    line = substr(line, RLENGTH + 1)
  } else if (line == "" || (line ~ /^[^ ]/ && shape != "paragraph")) {
    begin("paragraph")
  } else if (line ~ /^    / && shape == "paragraph") {
    begin("example")
  }
  sub(/^ +/, "", line)
  if (line != "")
    comment = comment escaped(line) "\n"
}

function write_page(declaration, name, file) {
  gsub(/QEL_API |QEL_NOEXCEPT|QEL_PRINTF\([0-9, ]*\)/, "", declaration)
  gsub(/[ \t]+/, " ", declaration)
  gsub(/^ | *;.*$/, "", declaration)
  if (!match(declaration, /Qel_[a-z0-9_]+\(/))
    return
  name = substr(declaration, RSTART, RLENGTH - 1)
  file = folder "/" name ".3"
  printf ".TH %s 3 \"\" \"qelrcpt\" \"Library Functions\"\n.SH NAME\n", toupper(name) >file
  printf "%s \\- function of %s\n.SH SYNOPSIS\n.nf\n", name, header >file
  printf ".B #include <%s>\n.fi\n.PP\n.B %s;\n", header, escaped(declaration) >file
  printf ".SH DESCRIPTION\n%s%s%s", section, section == "" ? "" : ".PP\n", comment >file
  printf ".SH SEE ALSO\n.BR %s (3)\n", see >file
  close(file)
}

FNR == 1 {
  header = FILENAME
  sub(/.*\//, "", header)
}

/^$/ {
  if (comment_ended)
    section = comment ~ /\.\n$/ ? comment : ""
  comment = ""
}

{ comment_ended = 0 }

/^\/\*/ { in_comment = 1; comment = ""; shape = "" }

in_comment {
  line = $0
  comment_ended = sub(/ *\*\/.*$/, "", line)
  in_comment = !comment_ended
  sub(/^ ?\/?\*+ ?/, "", line)
  if (in_comment || line != "")
    add_line(line)
  if (!in_comment)
    begin("")
  next
}

/^QEL_API / { declaration = "" ; in_declaration = 1 }

in_declaration {
  declaration = declaration " " $0
  if (/;/) {
    in_declaration = 0
    write_page(declaration)
  }
}
