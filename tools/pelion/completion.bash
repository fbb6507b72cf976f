# Completes the commands, options and files of pelion in bash. The options are asked of the program.

_pelion() {
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]-} options
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "list doctor call run --help --version" -- "$word")
    return
  fi
  case $word in
    -*)
      options=$("${COMP_WORDS[0]}" "$command" --help 2>/dev/null | \
        sed -nE 's/^ +(-h, *)?(--[a-z-]+).*/\2/p')
      mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
      ;;
    *)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      ;;
  esac
}
complete -F _pelion pelion
