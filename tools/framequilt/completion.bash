# SPDX-License-Identifier: Apache-2.0
# Completion of framequilt's commands, options and their values in bash.

# Puts those of "$2" that begin with "$1" into COMPREPLY.
_framequilt_words() {
  mapfile -t COMPREPLY < <(compgen -W "$2" -- "$1")
}

# The same for files ("$2" is -f) or folders (-d).
_framequilt_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$2" -- "$1")
}

# What comes after the option "$2" of command "$1", the word "$3" so far. False when the option has
# no value.
_framequilt_value() {
  case "$1 $2" in
  'stitch --mode') _framequilt_words "$3" 'motion overlap' ;;
  'stitch --crop') _framequilt_words "$3" 'box none' ;;
  'stitch --scale') _framequilt_words "$3" '1 2 auto' ;;
  'stitch --backend') _framequilt_words "$3" 'auto opencl host' ;;
  'replay --backend') _framequilt_words "$3" 'recorded opencl host' ;;
  'simulate --path') _framequilt_words "$3" 'serpentine drift' ;;
  'stitch -o' | 'stitch --output' | 'stitch --hints' | 'stitch --placements' | 'stitch --report' | \
    'stitch --report-html' | 'stitch --ome-tiff') _framequilt_files "$3" -f ;;
  'stitch --pyramid' | 'stitch --journal' | 'resume --inputs' | 'replay --inputs' | \
    'simulate -o' | 'simulate --output') _framequilt_files "$3" -d ;;
  # Numbers.
  'stitch --every' | 'stitch --pixel-size' | 'stitch --corner-budget' | 'stitch --max-rows' | \
    'stitch --max-cols' | 'stitch --checkpoint-every') ;;
  'simulate --frames' | 'simulate --cols' | 'simulate --rows' | 'simulate --overlap' | \
    'simulate --noise' | 'simulate --gain' | 'simulate --vignette' | 'simulate --blur' | \
    'simulate --rotation' | 'simulate --seed') ;;
  *) return 1 ;;
  esac
}

_framequilt() {
  # The words are looked at up to the cursor; bash splits --option=value in three.
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  if [[ $word == = ]]; then
    word=
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()

  local command= i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} != -* ]]; then
      command=${COMP_WORDS[i]}
      break
    fi
  done
  if [[ -z $command ]]; then
    _framequilt_words "$word" 'stitch resume replay simulate evaluate info --help --version'
    return
  fi

  if _framequilt_value "$command" "$before" "$word"; then return; fi
  if [[ $word != -* ]]; then
    case $command in
    info) ;;
    resume | replay) _framequilt_files "$word" -d ;;
    *) _framequilt_files "$word" -f ;;
    esac
    return
  fi
  local options=--help
  case $command in
  stitch)
    options+=' --every --hints --output --crop --placements --report --outlines --ome-tiff --pyramid
      --report-html --pixel-size --mode --static --dynamic --scale --corner-budget --max-rows
      --max-cols --backend --journal --checkpoint-every --quiet --verbose'
    ;;
  resume) options+=' --inputs --quiet --verbose' ;;
  replay) options+=' --inputs --backend --verbose' ;;
  simulate)
    options+=' --generated --output --frames --cols --rows --path --overlap --subpixel --noise
      --gain --vignette --blur --rotation --gray --seed'
    ;;
  evaluate) options+=' --json' ;;
  esac
  _framequilt_words "$word" "$options"
}

complete -F _framequilt framequilt
