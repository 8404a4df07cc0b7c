# Completion of morvik-dev in bash: `source` this file. What can follow is asked of the program
# itself, so that new verbs, options and stimuli are known at once.

_morvik_dev() {
  # Taken from the line: bash splits words at = and : of its own accord.
  local line=${COMP_LINE:0:COMP_POINT} words
  read -ra words <<<"$line"
  if [[ $line == *[[:blank:]] ]]; then words+=(""); fi
  mapfile -t COMPREPLY < <("${words[0]}" complete "${words[@]:1}" 2>/dev/null)

  # Only what stands behind the last = or : is put in.
  local current=${words[-1]}
  local settled=${current%"${current##*[=:]}"}
  COMPREPLY=("${COMPREPLY[@]#"$settled"}")
  if [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]]; then compopt -o nospace 2>/dev/null; fi
}

# Where the program knows nothing to say, names of files are completed.
complete -o bashdefault -o default -F _morvik_dev morvik-dev
