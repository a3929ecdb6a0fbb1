# Completion of qx for bash. The words come from the program's own --help, so they are never out of date.

_qx() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local -a path=()
  local word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word =~ ^[a-z][a-z-]*$ ]] && path+=("$word")
  done

  # The subcommands named so far; a file's name among them ends the path.
  local help='' candidate
  while :; do
    help=$("${COMP_WORDS[0]}" "${path[@]}" --help 2>/dev/null) && break
    [ ${#path[@]} -eq 0 ] && return
    unset 'path[-1]'
  done

  # The common options are accepted behind every subcommand.
  local common
  common=$("${COMP_WORDS[0]}" --help)
  local options=$help$'\n'${common%%Subcommands:*}

  # A list of choices behind the option before: LEVEL:{debug,warn}
  if [[ $previous == --* && $options =~ $previous\ [A-Z]+:\{([^}]*)\} ]]; then
    mapfile -t COMPREPLY < <(compgen -W "${BASH_REMATCH[1]//,/ }" -- "$current")
    return
  fi

  local -a words=()
  while read -r candidate _; do
    case $candidate in
      -h,--help) words+=(--help) ;;
      --*) words+=("$candidate") ;;
    esac
  done <<<"$options"
  if [[ $help == *Subcommands:* ]]; then
    while read -r candidate _; do
      [[ $candidate =~ ^[a-z][a-z-]*$ ]] && words+=("$candidate")
    done <<<"${help#*Subcommands:}"
  fi
  mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
}

complete -o default -F _qx qx
