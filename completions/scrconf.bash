# Bash completion of the command lines of scrconf(8) and scrconf-edid(1). It needs no helper
# functions.

_scrconf() {
    local word=${COMP_WORDS[COMP_CWORD]} index
    COMPREPLY=()
    # The first command ends what scrconf reads; -l and -lh have a file name behind them.
    for ((index = 1; index < COMP_CWORD; index++)); do
        case ${COMP_WORDS[index]} in
        -lt | -vdif) return ;;
        -l | -lh)
            ((index < COMP_CWORD - 1)) || mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        esac
    done
    case $word in
    /*) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "-lt -l -lh -vdif -0 -1 -2 -3 -4 -5 -6 -7" -- "$word") ;;
    esac
}
complete -o filenames -F _scrconf scrconf

# One EDID: without a letter those of the connectors are offered, else any file.
_scrconf_edid() {
    local word=${COMP_WORDS[COMP_CWORD]} source=(-f)
    COMPREPLY=()
    ((COMP_CWORD == 1)) || return
    [ -n "$word" ] || source=(-G "/sys/class/drm/*/edid")
    mapfile -t COMPREPLY < <(compgen "${source[@]}" -- "$word")
}
complete -o filenames -F _scrconf_edid scrconf-edid
