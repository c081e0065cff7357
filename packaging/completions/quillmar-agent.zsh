#compdef quillmar-agent

local context state state_descr line
typeset -A opt_args
local -a help=('(- *)--help[show what it takes]')

_arguments -S -C \
  '--data-dir[keep everything in DIR]:directory:_files -/' \
  '--service[use the service at URL for every region]:URL:_urls' \
  '--ca-file[trust the certificate authorities in FILE too]:file:_files' \
  '--simulate-tunnel[simulate the tunnel: nothing is changed or protected]' \
  $help \
  '(- *)--version[show the version]' \
  '1:command:->command' \
  '*::argument:->argument'

case $state in
  command)
    local -a commands=(
      'enroll:make this computer a child'\''s device'
      'run:keep the protection up, until told to stop'
      'status:show whether this computer is protected'
      'sync:check in now'
      'reset:forget the enrollment'
      'doctor:say what works on this computer'
    )
    _describe command commands
    ;;
  argument)
    case $line[1] in
      enroll) _arguments -S $help '--autostart[start protection now and with each login]' ;;
      run) _arguments -S $help '--verbose[tell more]' ;;
      status) _arguments -S $help '--json[as one JSON object]' ;;
      reset) _arguments -S $help '--yes[without asking]' ;;
      *) _arguments -S $help ;;
    esac
    ;;
esac
