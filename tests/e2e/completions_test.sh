#!/bin/bash
# What the shells offer behind `vendrilctl`.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"

share=${VENDRIL_INSTALLED:?}/share
read -ra schemes <<<"${VENDRIL_SCHEMES:?}"
bash_file=$share/bash-completion/completions/vendrilctl
zsh_file=$share/zsh/site-functions/_vendrilctl
fish_file=$share/fish/vendor_completions.d/vendrilctl.fish

# What bash offers for the last of the words $@, as one line.
offered_by_bash() {
  # shellcheck source=/dev/null
  source "$bash_file"
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _vendrilctl
  printf '%s' "${COMPREPLY[*]}"
}

# What fish offers for the command line $1, as one line.
offered_by_fish() {
  make_scratch_directory
  HOME=$scratch fish --no-config --command "source '$fish_file'; complete --do-complete '$1'" |
    cut --fields=1 | paste --serial --delimiters=' '
}

BashNamesTheFunctionForTheCommand() {
  # shellcheck source=/dev/null
  source "$bash_file"
  assert_equal 'the completion' 'complete -F _vendrilctl vendrilctl' "$(complete -p vendrilctl)"
}

BashOffersCommandsWordsAndOptions() {
  assert_equal 'behind s' status "$(offered_by_bash vendrilctl s)"
  assert_equal 'behind config' 'show save' "$(offered_by_bash vendrilctl config s)"
  assert_equal 'behind login-item' 'on off' "$(offered_by_bash vendrilctl login-item o)"
  assert_equal 'behind report' --skip-search "$(offered_by_bash vendrilctl --json report --s)"
  assert_equal 'behind log' '--follow --lines --json --verbose --help' \
    "$(offered_by_bash vendrilctl log -)"
  assert_equal 'behind a number that is wanted' '' "$(offered_by_bash vendrilctl log -n '')"
  assert_equal 'behind save' 'ExecutablePath=' "$(offered_by_bash vendrilctl config save Ex)"
}

EveryShellOffersEveryScheme() {
  local scheme
  for scheme in "${schemes[@]}"; do
    assert_equal bash "$scheme" "$(offered_by_bash vendrilctl unregister "$scheme")"
    assert_equal fish "$scheme" "$(offered_by_fish "vendrilctl unregister $scheme")"
    assert_contains zsh "$scheme" "$(<"$zsh_file")"
  done
}

ZshTakesTheFile() {
  command -v zsh >/dev/null || skip 'there is no zsh'
  assert_silent_success 'the syntax' zsh -n "$zsh_file"
  # The name of the function that zsh finds for the command.
  make_scratch_directory
  assert_equal 'the completion' _vendrilctl "$(zsh -f -c "fpath=('${zsh_file%/*}' \$fpath)
    autoload -Uz compinit && compinit -u -d '$scratch/dump' && print \$_comps[vendrilctl]")"
}

FishTakesTheFileAndOffersWords() {
  command -v fish >/dev/null || skip 'there is no fish'
  assert_silent_success 'the syntax' fish --no-execute "$fish_file"
  assert_equal 'behind s' status "$(offered_by_fish 'vendrilctl s')"
  assert_equal 'behind login-item' 'off on' "$(offered_by_fish 'vendrilctl login-item o')"
  assert_equal 'behind report' --skip-search "$(offered_by_fish 'vendrilctl report --sk')"
}

EveryShellOffersEveryCommand() {
  local command commands
  commands=$("$VENDRIL_INSTALLED/bin/vendrilctl" --help | sed -n '/Subcommands/,$ s/^  \([a-z-]*\).*/\1/p')
  assert_contains 'the commands' login-item "$commands"
  for command in $commands; do
    assert_contains bash " $command " " $(offered_by_bash vendrilctl "$command") "
    assert_contains fish " $command " " $(offered_by_fish "vendrilctl $command") "
    assert_contains zsh "'$command:" "$(sed "s/\"/'/" "$zsh_file")"
  done
}

run_test "$@"
