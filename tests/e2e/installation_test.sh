#!/bin/bash
# What `cmake --install` lays out, in a prefix that is chosen only then.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"

prefix=${VENDRIL_INSTALLED:?}
id=${VENDRIL_ID:?}
version=${VENDRIL_VERSION:?}
read -ra schemes <<<"${VENDRIL_SCHEMES:?}"
program=$prefix/bin/vendril
tool=$prefix/bin/vendrilctl
entry=$prefix/share/applications/$id.desktop
bus_service=$prefix/share/dbus-1/services/$id.service
unit=$prefix/share/systemd/user/$id.service
metainfo=$prefix/share/metainfo/$id.metainfo.xml
manuals=$prefix/share/man/man1
icons=$prefix/share/icons/hicolor

# The value of the key $2 in the file $1. The keys used here occur once in their files.
value_of() {
  local line
  line=$(grep "^$2=" "$1") || fail "no key $2 in $1"
  printf '%s' "${line#*=}"
}

TheDesktopEntryIsValid() {
  assert_silent_success 'the desktop entry' desktop-file-validate "$entry"
}

TheEntryNamesTheProgramUnquotedWithOneLink() {
  assert_equal 'Exec' "$program %u" "$(value_of "$entry" Exec)"
}

TheProgramThatTheEntryNamesIsThere() {
  [[ -x $program ]] || fail "$program is not an executable file"
}

TheEntryIsActivatedByTheBusAndHiddenFromMenus() {
  assert_equal DBusActivatable true "$(value_of "$entry" DBusActivatable)"
  assert_equal NoDisplay true "$(value_of "$entry" NoDisplay)"
  assert_equal X-GIO-NoFuse true "$(value_of "$entry" X-GIO-NoFuse)"
  assert_equal Terminal false "$(value_of "$entry" Terminal)"
}

TheEntryDeclaresEveryScheme() {
  assert_equal MimeType "$(printf 'x-scheme-handler/%s;' "${schemes[@]}")" \
    "$(value_of "$entry" MimeType)"
}

TheDesktopDatabaseNamesTheEntryForEveryScheme() {
  local scheme
  for scheme in "${schemes[@]}"; do
    assert_equal "handlers of $scheme" "$id.desktop;" \
      "$(value_of "$prefix/share/applications/mimeinfo.cache" "x-scheme-handler/$scheme")"
  done
}

TheBusServiceStartsTheProgramThroughTheUnit() {
  assert_equal Name "$id" "$(value_of "$bus_service" Name)"
  assert_equal Exec "$program" "$(value_of "$bus_service" Exec)"
  assert_equal SystemdService "$(basename "$unit")" "$(value_of "$bus_service" SystemdService)"
}

TheUnitStartsTheProgramUnderTheBusName() {
  assert_equal Type dbus "$(value_of "$unit" Type)"
  assert_equal BusName "$id" "$(value_of "$unit" BusName)"
  assert_equal ExecStart "$program" "$(value_of "$unit" ExecStart)"
}

TheMetainfoIsValid() {
  appstreamcli validate --no-net --strict "$metainfo" ||
    fail 'appstreamcli found something'
}

TheMetainfoNamesTheVersionAndEveryScheme() {
  local text scheme
  text=$(<"$metainfo")
  assert_contains metainfo "<release version=\"$version\"" "$text"
  for scheme in "${schemes[@]}"; do
    assert_contains metainfo "<mediatype>x-scheme-handler/$scheme</mediatype>" "$text"
  done
}

EveryProgramHasAManualThatRendersWithoutWarnings() {
  local installed
  make_scratch_directory
  for installed in "$prefix"/bin/*; do
    zcat "$manuals/$(basename "$installed").1.gz" >"$scratch/manual.1"
    assert_silent_success "the manual of $installed" \
      groff -man -ww -b -z -Tutf8 -rLL=80n "$scratch/manual.1"
  done
}

TheManualsNameTheVersionAndEveryScheme() {
  local page text scheme
  for page in vendril vendril-portal vendrilctl; do
    text=$(zcat "$manuals/$page.1.gz" | groff -man -Tascii -P-cbou)
    assert_contains "$page(1)" "Vendril $version" "$text"
    for scheme in "${schemes[@]}"; do
      assert_contains "$page(1)" "$scheme" "$text"
    done
  done
}

TheManualOfTheToolNamesEveryCommandAndOption() {
  local text word words
  text=$(zcat "$manuals/vendrilctl.1.gz" | groff -man -Tascii -P-cbou)
  words=$(for command in '' open report config login-item log; do
    # shellcheck disable=SC2086
    "$tool" $command --help
  done | grep --only-matching --extended-regexp '^  [a-z][a-z-]+|--[a-z-]+' | sort --unique)
  assert_contains 'the words of the help' update-version "$words"
  for word in $words; do
    assert_contains 'manual of the tool' "$word" "$text"
  done
}

TheManualOfThePortalNamesEveryOption() {
  local option text
  text=$(zcat "$manuals/vendril-portal.1.gz" | groff -man -Tascii -P-cbou)
  while IFS= read -r option; do
    assert_contains 'vendril-portal(1)' "$option" "$text"
  done < <("$prefix/bin/vendril-portal" --help | grep --only-matching -E -e '--[a-z]+')
  assert_contains 'vendril-portal --help' --answer "$("$prefix/bin/vendril-portal" --help)"
}

TheCompletionsOfThePortalNameEveryOption() {
  local option file
  while IFS= read -r option; do
    for file in bash-completion/completions/vendril-portal zsh/site-functions/_vendril-portal; do
      assert_contains "$file" "$option" "$(<"$prefix/share/$file")"
    done
    assert_contains 'the completion for fish' "-l ${option#--}" \
      "$(<"$prefix/share/fish/vendor_completions.d/vendril-portal.fish")"
  done < <("$prefix/bin/vendril-portal" --help | grep --only-matching -E -e '--[a-z]+')
}

BashCompletesTheAnswersOfThePortal() {
  # shellcheck source=/dev/null
  source "$prefix/share/bash-completion/completions/vendril-portal"
  COMP_WORDS=(vendril-portal --answer re)
  COMP_CWORD=2
  _vendril_portal
  assert_equal completions 'redirect reset' "${COMPREPLY[*]}"
}

ThePortalTellsItsVersion() {
  assert_equal version "vendril-portal $version" "$("$prefix/bin/vendril-portal" --version)"
}

EveryIconHasTheSizeOfItsDirectory() {
  local size
  for size in 16 22 24 32 48 64 128 256; do
    assert_contains "icon of $size pixels" "PNG image data, $size x $size," \
      "$(file "$icons/${size}x$size/apps/$id.png")"
  done
  assert_contains 'scalable icon' SVG "$(file "$icons/scalable/apps/$id.svg")"
}

NoPlaceholderIsLeft() {
  ! grep --recursive --extended-regexp '@[A-Z_]+@' "$prefix/share" ||
    fail 'a placeholder was not filled in'
}

NothingButTheProgramsFilesIsInstalled() {
  local strangers
  strangers=$(find "$prefix" -type f ! -name "$id.*" ! -name 'vendril*' \
    ! -name '_vendril*' ! -name mimeinfo.cache)
  assert_equal 'files of other names' '' "$strangers"
}

APrefixThatCannotStandInAnEntryIsRefused() {
  local bad output
  make_scratch_directory
  for bad in 'with space' 'with"quote' 'with%percent' "with\$dollar"; do
    if output=$(cmake --install "$VENDRIL_BUILD_DIR" --prefix "$scratch/$bad" 2>&1); then
      fail "the prefix '$bad' was taken"
    fi
    assert_contains "the refusal of '$bad'" 'cannot stand in a desktop' "$output"
    [[ ! -e $scratch/$bad ]] || fail "something was installed in '$bad'"
  done
}

TheToolIsOfTheSameVersion() {
  assert_contains 'vendrilctl --version' "vendrilctl $version" "$("$tool" --version)"
}

TheCompletionsLieWhereTheShellsLook() {
  local file
  for file in bash-completion/completions/vendrilctl fish/vendor_completions.d/vendrilctl.fish \
    zsh/site-functions/_vendrilctl; do
    [[ -f $prefix/share/$file ]] || fail "there is no $prefix/share/$file"
  done
}

InTheSystemsOwnPrefixTheUnitLiesWhereSystemdLooks() {
  local destination
  make_scratch_directory
  for destination in /usr /usr/local; do
    DESTDIR=$scratch cmake --install "$VENDRIL_BUILD_DIR" --prefix "$destination" >/dev/null
    assert_equal "ExecStart in $destination" "$destination/bin/vendril" \
      "$(value_of "$scratch$destination/lib/systemd/user/$id.service" ExecStart)"
  done
}

run_test "$@"
