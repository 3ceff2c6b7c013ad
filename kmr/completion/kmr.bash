# Completion of kmr for bash. Commands, options and their choices come from its own --help.

# The first word of each line under a heading of the help on stdin.
_kmr_listed()
{
    sed -n "/^$1:/,/^\$/s/^  \(-[a-zA-Z],\)\{0,1\}\([^ ]\{1,\}\).*/\2/p"
}

# The choices of an option, from a line like "  --echo TEXT:{on,off,auto}" of the help on stdin.
_kmr_choices()
{
    sed -n "s/^  $1 [A-Z]*:{\([^}]*\)}.*/\1/p" | tr , ' '
}

_kmr_complete_words()
{
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word")
}

_kmr_complete_files()
{
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
    compopt -o filenames 2>/dev/null
}

# The names of --names or of the project file. They may have blanks.
_kmr_names()
{
    local -a given=()
    local i value
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        --names | --config | --driver)
            value=${COMP_WORDS[i + 1]}
            [[ $value == = ]] && value=${COMP_WORDS[i + 2]}
            given+=("${COMP_WORDS[i]}" "$value")
            ;;
        esac
    done
    "$kmr" tags list "${given[@]}" --format csv 2>/dev/null | sed '1d; s/,.*//'
}

# An area, before its address, or a name. Both may have a station before them.
_kmr_complete_tags()
{
    local station='' typed=${word//\\/} name
    typed=${typed#[\"\']}
    if [[ $typed =~ ^[0-9]+# ]]; then
        station=${BASH_REMATCH[0]}
        typed=${typed#"$station"}
    fi
    COMPREPLY=()
    while IFS= read -r name; do
        [[ $name == "$typed"* ]] || continue
        # Inside quotes, which bash closes, a name needs no escaping.
        [[ $word == [\"\']* ]] || name=$(printf %q "$name")
        COMPREPLY+=("$station$name")
    done < <("$kmr" areas --format csv 2>/dev/null | sed '1d; s/,.*//'
        _kmr_names)
    compopt -o nospace 2>/dev/null
}

_kmr_complete_value()
{
    case $before in
    --config | --driver | --names | --capture | --load | --save | --pty | --output | --junit | \
        --ca | --certificate | --key | --credentials | --spool)
        _kmr_complete_files
        ;;
    *) _kmr_complete_words "$(_kmr_choices "$before" <<<"$options")" ;;
    esac
}

_kmr_complete_argument()
{
    local arguments
    arguments=$(_kmr_listed Positionals <<<"$help")
    case $arguments in
    FILE*) _kmr_complete_files ;;
    TAG* | ADDRESS | AREA*) _kmr_complete_tags ;;
    esac
}

_kmr()
{
    local kmr=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    # Bash splits "--format=csv" into three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    # The options of kmr itself are valid for each command.
    local help options i
    local -a command=()
    help=$("$kmr" --help 2>/dev/null) || return
    options=$help
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if _kmr_listed Subcommands <<<"$help" | grep -qxFe "${COMP_WORDS[i]}"; then
            command+=("${COMP_WORDS[i]}")
            help=$("$kmr" "${command[@]}" --help 2>/dev/null) || return
            options+=$'\n'$help
        fi
    done

    if [[ $before == --* ]] && grep -qe "^  $before [A-Z]" <<<"$options"; then
        _kmr_complete_value
    elif [[ $word == -* ]]; then
        _kmr_complete_words "$(_kmr_listed Options <<<"$options" | sort -u)"
    elif grep -q '^Subcommands:' <<<"$help"; then
        _kmr_complete_words "$(_kmr_listed Subcommands <<<"$help")"
    else
        _kmr_complete_argument
    fi
}

complete -F _kmr kmr
