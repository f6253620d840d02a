# SPDX-License-Identifier: Apache-2.0

# bash completion of marrowby-unlock(1)
_marrowby_unlock() {
    COMPREPLY=()
    [ "$COMP_CWORD" -eq 1 ] || return 0
    mapfile -t COMPREPLY < <(compgen -W "status doctor look pause resume settings quit --at-login --self-check --help --version" \
        -- "${COMP_WORDS[1]}")
}
complete -F _marrowby_unlock marrowby-unlock
