# Completes the command line of launchscreen in bash.
# shellcheck shell=bash

_launchscreen() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  # bash splits --option=value into three words.
  if [[ $current == "=" ]]; then
    current=""
  elif [[ $previous == "=" ]]; then
    previous="${COMP_WORDS[COMP_CWORD - 2]}"
  fi

  local command=""
  if [[ $COMP_CWORD -gt 1 ]]; then
    command="${COMP_WORDS[1]}"
  fi
  local common="--help --version" words="" files=""
  case "$command $previous" in
    "show --display") words="auto cocoa headless wayland x11" ;;
    "show --mode") words="forced skip" ;;
    "show --present") words="embedded modal sheet" ;;
    "show --events" | "show --screenshot") files=yes ;;
    "show --event" | "show --duration" | "show --size" | "show --window" | "show --skip-after") ;;
    "show "*)
      words="--display --mode --event --duration --present --content-controller --indicator --size
        --window --screenshot --events --skip-after $common"
      ;;
    "play --timeline") files=yes ;;
    "play "*)
      files=yes
      words="--timeline $common"
      ;;
    " "*) words="show play $common" ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  if [[ -n $files ]]; then
    compopt -o default 2>/dev/null
  fi
}

complete -F _launchscreen launchscreen
