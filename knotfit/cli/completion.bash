# SPDX-License-Identifier: MIT
# Completion of knotfit's commands, options and choices for bash.
_knotfit() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local output='-o --output --format --tess --force' words=''
  local table='--columns --delimiter --skip'
  local fit="--degree --controls --tol --param --knots --smooth --solver --rank-tol --delimiter --skip --thin
    --units --report -q --quiet -v --verbose --progress $output"
  case $previous in
    --param) words='chord centripetal uniform' ;;
    --knots) words='average uniform' ;;
    --ends) words='free exact' ;;
    --edges) words='free exact corners' ;;
    --order) words='rows columns' ;;
    --plane) words='xy fit' ;;
    --units) words='mm cm m in' ;;
    --dir) words='u v' ;;
    --progress) words='auto always never' ;;
    --delimiter) words='auto comma semicolon tab space' ;;
    --format) words='json igs stp obj csv ply svg png pdf' ;;
    --model) words='poly: linear noint' ;;
    --solver)
      words='householder qr'
      case ${COMP_WORDS[1]} in
        lsq) words+=' svd cholesky lu' ;;
        curve) words+=' auto banded' ;;
        surface) words+=' auto' ;;
      esac
      ;;
  esac
  if [[ -z $words && $COMP_CWORD -eq 1 ]]; then
    words='curve surface eval check insert convert info lsq demo help --help --version'
  elif [[ ${COMP_WORDS[1]} == help ]]; then
    words='curve surface eval check insert convert info lsq demo'
  elif [[ -z $words && $current == -* ]]; then
    case ${COMP_WORDS[1]} in
      curve) words="$fit --refine --ends --pass --tangent --closed --corner --weights --columns --merge" ;;
      surface) words="$fit --edges --height --spacing --order --scattered --plane --weights --columns" ;;
      eval) words='--at --n --grid --deriv --normals -o --output --force' ;;
      check) words="--nearest --tol --merge -o --output --force $table" ;;
      insert) words="--knot --dir $output" ;;
      convert) words=$output ;;
      info) words=$table ;;
      lsq) words="--model --solver --report --force -q --quiet $table" ;;
      demo) words='--force' ;;
    esac
    words+=' --help'
  fi
  if [[ $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -o filenames -F _knotfit knotfit
