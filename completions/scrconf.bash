# Bash completion of the command line of scrconf(8). It needs no helper functions.

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
