#!/bin/bash
# The Debian package.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"

id=${VENDRIL_ID:?}
package=$(echo build/release/vendril_*.deb)

field() {
  dpkg-deb --field "$package" "$1"
}

contents() {
  dpkg-deb --contents "$package"
}

LintianFindsNoErrorAndNoWarning() {
  local output status=0
  output=$(lintian --allow-root --no-user-dirs --fail-on error,warning "$package" 2>&1) || status=$?
  ((status == 0)) || fail "lintian ended with $status: $output"
  # Lintian says nothing at all about a package that it could not read.
  assert_contains 'the overrides in use' 'initial-upload-closes-no-bugs' \
    "$(lintian --allow-root --no-user-dirs --show-overrides "$package" 2>&1)"
}

ItDependsOnTheLibrariesThatTheProgramIsLinkedWith() {
  local library depends
  depends=$(field Depends)
  for library in libc6 libcpp-httplib0.11 libcurl4 libglib2.0-0 libjansson4 libplist3; do
    assert_contains Depends "$library" "$depends"
  done
}

ItLaysOutTheApplicationInUsr() {
  local file all
  all=$(contents)
  for file in bin/vendril bin/vendrilctl bin/vendril-portal "share/applications/$id.desktop" \
    "share/dbus-1/services/$id.service" "lib/systemd/user/$id.service" \
    "share/metainfo/$id.metainfo.xml" "share/icons/hicolor/scalable/apps/$id.svg" \
    share/man/man1/{vendril,vendrilctl,vendril-portal}.1.gz \
    share/bash-completion/completions/{vendrilctl,vendril-portal} \
    share/zsh/vendor-completions/_{vendrilctl,vendril-portal} \
    share/fish/vendor_completions.d/{vendrilctl,vendril-portal}.fish \
    share/doc/vendril/copyright share/doc/vendril/changelog.Debian.gz; do
    assert_contains contents " ./usr/$file" "$all"
  done
}

ItsEntryNamesTheProgramInUsr() {
  local entry
  entry=$(dpkg-deb --fsys-tarfile "$package" |
    tar --extract --to-stdout "./usr/share/applications/$id.desktop")
  assert_contains entry $'\nExec=/usr/bin/vendril %u\n' "$entry"
}

ItsCopyrightSaysThatNoLicenceIsGranted() {
  assert_contains copyright 'No licence is granted yet' \
    "$(dpkg-deb --fsys-tarfile "$package" |
      tar --extract --to-stdout ./usr/share/doc/vendril/copyright)"
}

AFreshSystemInstallsItOpensALinkAndRemovesIt() {
  scripts/try-package "$package"
}

run_test "$@"
