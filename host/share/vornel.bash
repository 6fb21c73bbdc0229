# Completion of `vornel` for bash.
_vornel()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
    local options="\
        --base --rover --config --json --trace --no-checks --verbose --solve-mode --elevation-mask --systems \
        --ephemeris-source --gal-freq1 --gal-freq2 --exclude --no-iono --base-xyz --rover-xyz \
        --base-height --rover-height --trust-code --start --end --interval --strict --unpack-limit \
        --sampling-interval \
        --min-epochs --period-length --short-baseline-limit --max-fix-baseline --ratio-threshold \
        --outlier-factor --slip-test-cap --phase-std --tropo-model --pressure --temperature \
        --humidity --csv --report --trace-level --help --help-all \
"
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "solve info config --help --version" -- "$word")
        return
    fi
    case $before in
        --ephemeris-source)
            mapfile -t COMPREPLY < <(compgen -W "auto broadcast precise" -- "$word")
            return ;;
        --solve-mode)
            mapfile -t COMPREPLY < <(compgen -W "0 1 2 3 4 5 6" -- "$word")
            return ;;
    esac
    if [ "$command" != info ] && [ "${word:0:1}" = - ]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}
complete -o filenames -F _vornel vornel
