#!/bin/bash
# What the compiler and the linker had to put into the programs of the package.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"

# The programs below $scratch, one a line.
unpack_programs() {
  make_scratch_directory
  dpkg-deb --extract "$(echo build/release/vendril_*.deb)" "$scratch"
  programs=()
  local file
  while IFS= read -r file; do
    if [[ $(file --brief "$file") == ELF* ]]; then
      programs+=("$file")
    fi
  done < <(find "$scratch" -type f | sort)
  assert_contains 'the programs' "$scratch/usr/bin/vendril" "${programs[*]}"
  assert_contains 'the programs' "$scratch/usr/libexec/vendril/vendril-alert" "${programs[*]}"
}

# What readelf prints with the options $1 holds the text $2 for every program.
assert_every_program_has() {
  local program
  unpack_programs
  for program in "${programs[@]}"; do
    assert_contains "$program" "$2" "$(readelf --wide "$1" "$program")"
  done
}

TheProgramsCanBeLoadedAnywhere() {
  assert_every_program_has --file-header 'DYN (Position-Independent Executable'
}

RelocatedDataIsReadOnlyOnceTheProgramRuns() {
  assert_every_program_has --program-headers GNU_RELRO
}

EverySymbolIsBoundBeforeTheProgramRuns() {
  assert_every_program_has --dynamic BIND_NOW
}

TheStackHoldsNoCode() {
  local program
  unpack_programs
  for program in "${programs[@]}"; do
    assert_equal "flags of the stack of $program" 'RW' \
      "$(readelf --wide --program-headers "$program" | awk '$1 == "GNU_STACK" { print $7 }')"
  done
}

OverwrittenStackFramesAreNoticed() {
  assert_every_program_has --dyn-syms __stack_chk_fail
}

# The mark of the whole program is missing where the start-up code of the C library has none.
JumpsLandWhereTheyMay() {
  [[ $(uname --machine) == x86_64 ]] || skip 'other processors have no such instruction'
  unpack_programs
  local program marks
  for program in "${programs[@]}"; do
    marks=$(objdump --disassemble "$program" | grep --count endbr64 || true)
    ((marks >= 20)) || fail "$program has only $marks places to jump to"
  done
}

# The alert helper calls no function that has a checked variant.
CallsAreCheckedAgainstTheSizesOfTheirBuffers() {
  unpack_programs
  local symbols
  symbols=$(readelf --wide --dyn-syms "$scratch/usr/bin/vendril")
  [[ $symbols =~ __[a-z]+_chk@ ]] || fail "no checked call among: $symbols"
}

LargeStackFramesAreTouchedPageByPage() {
  [[ $(uname --machine) == x86_64 ]] || skip 'the instruction is that of another processor'
  unpack_programs
  objdump --disassemble "$scratch/usr/bin/vendril" >"$scratch/code"
  # shellcheck disable=SC2016 # The dollar sign belongs to the instruction.
  grep --quiet 'orq *$0x0,(%rsp)' "$scratch/code" || fail 'no frame is probed'
}

run_test "$@"
