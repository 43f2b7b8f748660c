# A manual page for each function of a header, made from its declaration and the comment above:
# awk -v folder=FOLDER -v see=PAGE -f manual_pages.awk HEADER

function escaped(text) {
  gsub(/\\/, "\\e", text)
  gsub(/-/, "\\-", text)
  return text ~ /^[.']/ ? "\\&" text : text
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
  printf ".SH DESCRIPTION\n%s", comment >file
  printf ".SH SEE ALSO\n.BR %s (3)\n", see >file
  close(file)
}

FNR == 1 {
  header = FILENAME
  sub(/.*\//, "", header)
}

/^$/ { comment = "" }

/^\/\*/ { in_comment = 1; comment = "" }

in_comment {
  is_end = $0 ~ /\*\//
  line = $0
  sub(/^ ?\/?\*+ ?/, "", line)
  sub(/ *\*\/.*$/, "", line)
  comment = comment (line == "" ? ".PP" : escaped(line)) "\n"
  if (is_end)
    in_comment = 0
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
