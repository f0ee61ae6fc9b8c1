# shellcheck shell=bash disable=SC2154
# The applications that scripts/package builds and runs outside the tree; sourced by it.

# Starts the package's own ad service on a free port, with nothing but the moved prefix to live from.
start_service() {
  coproc SERVICE { exec "$elsewhere/bin/vantorium-sandbox" --log "$work/journal" 2>"$logs/service.log"; }
  service_pid=$SERVICE_PID
  if ! read -r -t 20 service <&"${SERVICE[0]}"; then
    echo "The installed vantorium-sandbox did not start:"
    cat "$logs/service.log"
    failures=$((failures + 1))
    finish
  fi
}

# A consumer has done its work when it has met the service.
run_consumer() { # program
  LD_LIBRARY_PATH=$consumer_libraries timeout 60 "$1" "$service" "$(mktemp -d -p "$work")" | tee "$work/said"
  grep -q '^ready with ' "$work/said"
}
consumer_libraries=

configure_consumer() { # source build option...
  cmake -S "$1" -B "$2" -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$elsewhere" "${@:3}"
}

consume_cmake() { # folder option...
  local build
  build=$(mktemp -d -p "$work")
  configure_consumer "$work/consumers/$1" "$build" "${@:2}"
  cmake --build "$build"
  run_consumer "$build/consumer"
}

# What goes wrong in find_package is said in words that help.
cmake_tells() {
  local project=$work/wrong
  told() { # components expected [language]
    if configure_for "$1" "$elsewhere" "${3:-C}" >"$work/told" 2>&1; then
      echo "find_package(vantorium $1) should fail and does not."
      return 1
    fi
    tr -s ' \n' '  ' <"$work/told" | grep -F "$2" || { cat "$work/told"; return 1; }
  }
  told "REQUIRED COMPONENTS qt" 'The component `qt` is not installed as a shared library'
  told "REQUIRED COMPONENTS qt static" "not installed as a static library in $elsewhere" CXX
  told "REQUIRED COMPONENTS core static" "add CXX to the LANGUAGES of project()"
  told "REQUIRED COMPONENTS shared static" "exclude each other"
  told "9.0 REQUIRED" 'compatible with requested version "9.0"'
}

# A package of archives alone is found by those who ask for no kind; an optional component that lacks what it needs is
# not there, and the rest is.
cmake_makes_do() {
  local project=$work/frugal
  cp -r "$elsewhere" "$work/archives"
  rm "$work/archives"/lib/*/cmake/vantorium/*-shared*.cmake
  configure_for "REQUIRED COMPONENTS headless" "$work/archives" CXX -DBUILD_SHARED_LIBS=ON
  PKG_CONFIG_LIBDIR=$work/nowhere configure_for "REQUIRED OPTIONAL_COMPONENTS gtk" "$elsewhere" CXX | tee "$work/said"
  grep -x -e "-- core TRUE gtk " "$work/said"
}

configure_for() { # components prefix [language] [option...]
  rm -rf "$project"
  mkdir -p "$project"
  printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' "project(asks LANGUAGES ${3:-C})" "find_package(vantorium $1)" \
    'message(STATUS "core ${vantorium_core_FOUND} gtk ${vantorium_gtk_FOUND}")' >"$project/CMakeLists.txt"
  cmake -S "$project" -B "$project/build" -DCMAKE_PREFIX_PATH="$2" "${@:4}"
}

package_flags() { PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config "$@" vantorium-headless; }

consume_pkg_config() { # compiler standard source
  local program
  program=$(mktemp -p "$work")
  # shellcheck disable=SC2046  # flags are words
  "$1" "$2" -Wall -Wextra -Werror "$work/consumers/$3" -o "$program" $(package_flags --cflags --libs)
  consumer_libraries=$libdir run_consumer "$program"
}

# The archives are named in full, for -lvantorium would take the shared library beside them.
consume_pkg_config_static() { # compiler standard source
  local program flags
  program=$(mktemp -p "$work")
  flags=$(package_flags --static --cflags --libs | sed -E 's/-l(vantorium[a-z-]*)/-l:lib\1.a/g')
  # shellcheck disable=SC2086  # flags are words
  "$1" "$2" -Wall -Wextra -Werror "$work/consumers/$3" -o "$program" $flags
  if readelf -d "$program" | grep 'NEEDED.*vantorium'; then
    echo "The program was to be linked with the archives and needs the shared library."
    return 1
  fi
  run_consumer "$program"
}

# Warnings of ours would be errors here: the consumer's build is held to them. It builds beside the package, as deep in
# the tree, so that the compiler's cache knows the sources already.
consume_sources() { # name option...
  local build=$out/fetch_content-$1
  cmake -G Ninja -S tests/package/fetch_content -B "$build" -DCMAKE_BUILD_TYPE=Release \
    -DVANTORIUM_SOURCE="$source" -DVANTORIUM_WERROR=ON "${@:2}"
  cmake --build "$build"
  run_consumer "$build/consumer"
  if find "$build" -name '*-sandbox*' -o -name '*-drive*' -o -name '*_tests*' | grep .; then
    echo "An application that adds Vantorium to its build got its tools or tests, too."
    return 1
  fi
}

# Builds an example from its installed source and runs it: through its whole flow when it has no screen, else until it
# has met the service.
consume_example() { # name option...
  local build program
  build=$(mktemp -d -p "$work")
  [[ -d $work/examples ]] || cp -r "$elsewhere/share/doc/vantorium/examples" "$work/examples"
  configure_consumer "$work/examples/$1" "$build" "${@:2}"
  cmake --build "$build" -j "$(nproc)"
  program=$build/$1
  if ! readelf -d "$program" | grep -q 'NEEDED.*libgtk'; then
    timeout 60 "$program" "$service" "$(mktemp -d -p "$work")"
    return
  fi
  case $1 in
    c_*) meet_service "$program" "$service" ;;
    *) meet_service "$program" --service-url "$service" ;;
  esac
}

# Runs a program with windows until the service's journal has its init exchange.
meet_service() { # command...
  local seen pid code=0
  seen=$(wc -l <"$work/journal")
  timeout 60 scripts/support/with-display "$@" &
  pid=$!
  timeout 50 grep -m 1 '"path":"/api/init"' <(exec tail -n +$((seen + 1)) -F "$work/journal" --pid $pid) || code=1
  kill $pid 2>/dev/null || true
  wait $pid || true
  ((code == 0)) || echo "$1 did not introduce itself to the service."
  return $code
}

# Another language finds the shared libraries and all it needs in them.
call_from_python() {
  LD_LIBRARY_PATH=$libdir timeout 60 python3 "$elsewhere/share/doc/vantorium/examples/python_ad_flow/ad_flow.py" \
    "$service" "$(mktemp -d -p "$work")"
}

# The tools play an ad flow together.
play_script() {
  timeout 60 "$elsewhere/bin/vantorium-drive" --base-url "$service" --widget-url "$service" \
    --home "$(mktemp -d -p "$work")" "$elsewhere/share/doc/vantorium/examples/scripts/rewarded-video.jsonl"
}
