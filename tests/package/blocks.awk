# SPDX-License-Identifier: BSD-2-Clause
# Takes the C++ blocks out of a page: those with a main() become NAME-1.cpp, NAME-2.cpp, ..., the others functions that are
# appended to fragments.cpp; what a program needs beside the library, "<!-- needs: PKG-CONFIG MODULE -->" before it, stands in
# NAME-1.needs. awk -v page=PAGE -v name=NAME -f blocks.awk FILE
/^<!-- given: .* -->$/ { given = substr($0, 13, length($0) - 16) }
/^<!-- needs: .* -->$/ { needs = substr($0, 13, length($0) - 16) }
/^```cpp$/ {
  inside = 1
  first = FNR + 1
  body = includes = ""
  next
}
/^```$/ && inside {
  inside = 0
  if (body ~ /int main\(/) {
    printf "%s", body > (name "-" ++programs ".cpp")
    if (needs)
      print needs > (name "-" programs ".needs")
  } else {
    gsub(/#include[^\n]*/, "", body)
    printf "%snamespace block_%s_%d {\n%s\nvoid block() {\n#line %d \"%s\"\n%s}\n}\n", includes, name, first, given, first,
      page, body >> "fragments.cpp"
  }
  given = needs = ""
}
inside {
  body = body $0 "\n"
  if (/^#include/)
    includes = includes $0 "\n"
}
