# The words of the flows, beside those of the shell. All files are as old as each other unless a time is given.

config='--config config.xml'
records=.KORVANTHEMIX

lrd() { "$LRD" "$@"; }

# put FILE TEXT [SECONDS]
put() {
  mkdir -p "$(dirname "$1")" && printf '%s' "$2" > "$1" && touch -d "@${3:-1700000000}" "$1"
}

# object FOLDER/FILE TEXT [SECONDS]: an object file and, beside it, its record; all versions of a file share one.
object() {
  put "$1" cad "$3"
  local file
  file=$(basename "$1")
  put "$(dirname "$1")/$records/${file%.[0-9]*}.xml" "$2"
}

# record PHID [STAMP [ENTRIES]]
record() {
  printf '<object version="4.0"><phid>%s</phid><objectChangeStamp>%s</objectChangeStamp>' "$1" "${2-1700000000}"
  printf '<ceStamp>CE</ceStamp><macroceStamp>MC</macroceStamp><xsStamp>XS</xsStamp><hashcode>HC</hashcode>%s' "$3"
  printf '</object>\n'
}

# entry KIND ID PHID [STAMP]: what a record holds of another object.
entry() {
  printf '<%s id="%s"><phid>%s</phid><objectChangeStamp>%s</objectChangeStamp>' "$1" "$2" "$3" "$4"
  printf '<ceStamp>E</ceStamp><macroceStamp>M</macroceStamp><xsStamp>X</xsStamp><hashcode>H</hashcode></%s>' "$1"
}

# cad FOLDER/FILE [ATTRIBUTES]: an object of a request or an answer.
cad() {
  printf '<cadobject cadid="%s" filename="%s" dirname="%s" %s/>' "$(basename "$1")" "$(basename "$1")" \
    "$(dirname "$1")" "$2"
}

request() { printf '<command cname="synclocalrecognition"><cadobjectlist>%s</cadobjectlist></command>\n' "$*"; }

# checkout FOLDER NAME...: the answer to a check-out of the parts of these names.
checkout() {
  local folder=$1 name
  shift
  printf '<response cname="checkoutEx"><info><cadobjectlist>'
  for name in "$@"; do cad "$folder/$name.prt.1" "phid=\"PH-$name\" type=\"part\" selected=\"true\""; done
  printf '</cadobjectlist></info></response>\n'
}

# Changes a flow's folder so that anybody may work in it, and runs lrd as a user whom the system refuses what it
# refuses: not as the superuser. The program and its libraries may stand where only their builder may go.
open_to_all() {
  mkdir -p bin && cp "$LRD" "$(dirname "$LRD")"/*.so bin && chmod -R a+rwX .. && umask 0
}
lrd_as_user() {
  if [ "$(id -u)" = 0 ]; then
    LD_LIBRARY_PATH=bin setpriv --reuid 65534 --regid 65534 --clear-groups bin/lrd "$@"
  else
    lrd "$@"
  fi
}

# unchanged COMMAND...: complains unless the command leaves all names, all bytes and the times of all files as they were.
state() { find . -type d -print -o -printf '%p %y %T@\n' -type f -exec cksum {} + | sort; }
unchanged() {
  local before ended
  before=$(state)
  "$@"
  ended=$?
  [ "$(state)" = "$before" ] || echo 'the folder has changed'
  return $ended
}
