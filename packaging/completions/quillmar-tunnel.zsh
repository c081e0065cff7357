#compdef quillmar-tunnel

local context state state_descr line
typeset -A opt_args
local -a help=('(- *)--help[show what it takes]')
local -a authorities=('--ca-file[trust the certificate authorities in FILE too]:file:_files')

_arguments -S -C \
  $help \
  '(- *)--version[show the version]' \
  '1:command:->command' \
  '*::argument:->argument'

case $state in
  command)
    local -a commands=(
      'run:be the VPN service that NetworkManager reaches'
      'release:take away what run has put up'
      'serve:answer at an address'
    )
    _describe command commands
    ;;
  argument)
    case $line[1] in
      run) _arguments -S $help $authorities ;;
      serve)
        _arguments -S $help $authorities '--endpoint[ask this https URL]:URL:_urls' \
          '--listen[answer there, over UDP and TCP]:address:'
        ;;
      *) _arguments -S $help ;;
    esac
    ;;
esac
