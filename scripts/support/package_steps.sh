# shellcheck shell=bash disable=SC2154
# The steps of scripts/package that need no consumer; sourced by it.

failures=0

# Runs one step with its output in a log, and says in a line how it went; of one that failed, the end of the log too.
step() { # title command...
  local title=$1 start=$SECONDS code
  log=$logs/$(tr -cs '[:alnum:]\n' - <<<"$title").log
  shift
  (set -e; "$@") >"$log" 2>&1
  code=$?
  if ((code == 0)); then
    printf '%4d s  %s\n' $((SECONDS - start)) "$title"
    return 0
  fi
  printf '%4d s  %s: FAILED (%d). The end of %s:\n' $((SECONDS - start)) "$title" $code "${log#"$source"/}"
  tail -n 40 "$log" | sed 's/^/        /'
  failures=$((failures + 1))
  case $title in build | install) finish ;; esac
}

finish() {
  if ((failures)); then
    printf '\nNOT WELL: %d of the steps above failed (package, %d s)\n' $failures $((SECONDS - begin))
    exit 1
  fi
  printf '\nall well (package, %d s)\n' $((SECONDS - begin))
  exit 0
}

build_package() {
  cmake --preset package -DVANTORIUM_WERROR=ON && cmake --build "$tree"
}

# A package that knows where it was built works nowhere else. Programs may not name it either: it is nobody's business.
names_no_folder() {
  local found
  if found=$(grep -rlF "$source" "$out/prefix"); then
    printf 'These files have %s in them:\n%s\n' "$source" "$found"
    return 1
  fi
}

core_needs_no_toolkit() {
  readelf -d "$tree/src/libvantorium.so" >"$work/needed"
  if grep -E 'NEEDED.*(gtk|gdk|glib|gobject|gio-|webkit|gst|pulse)' "$work/needed"; then
    echo "The core links a library of a host: see PRIVATE in src/CMakeLists.txt."
    return 1
  fi
}

make_debs() {
  mkdir -p "$out/debs"
  (cd "$tree" && cpack -G DEB -B "$out/debs")
  rm -rf "$out/debs/_CPack_Packages"
  local package
  for package in libvantorium libvantorium-dev libvantorium-gtk vantorium-tools; do
    ls "$out/debs/$package"_*.deb
    dpkg-deb --field "$out/debs/$package"_*.deb Package Version Depends
    dpkg-deb --contents "$out/debs/$package"_*.deb
  done
}

lintian_is_quiet() {
  lintian --allow-root --fail-on error,warning --suppress-tags-from-file packaging/debian/lintian-suppressed "$out"/debs/*.deb
}

numbers() {
  local library=$libdir/libvantorium.so.0
  printf '\nstripped shared core: %d bytes; exported symbols: %d of the C API, %d of C++, %d for hosts\n' \
    "$(stat -L -c %s "$library")" "$(exported VANTORIUM_0)" "$(exported VANTORIUM_CXX)" "$(exported VANTORIUM_PRIVATE)"
  ls "$out"/debs/*.deb 2>/dev/null | while read -r deb; do
    printf '%9d bytes  %s\n' "$(stat -c %s "$deb")" "${deb#"$source"/}"
  done
}

exported() { # node
  nm -D --defined-only --with-symbol-versions "$libdir/libvantorium.so.0" | grep -c " [^A] .*@@$1"
}
