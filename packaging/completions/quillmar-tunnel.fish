# fish completion for quillmar-tunnel(1)
set -l commands run release serve
set -l no_command "not __fish_seen_subcommand_from $commands"

complete -c quillmar-tunnel -f
complete -c quillmar-tunnel -l help -d 'Show what it takes'

# Before a command
complete -c quillmar-tunnel -n $no_command -l version -d 'Show the version'
complete -c quillmar-tunnel -n $no_command -a run -d 'Be the VPN service that NetworkManager reaches'
complete -c quillmar-tunnel -n $no_command -a release -d "Take away what 'run' has put up"
complete -c quillmar-tunnel -n $no_command -a serve -d 'Answer at an address'

# Of a command
complete -c quillmar-tunnel -n '__fish_seen_subcommand_from run serve' -l ca-file -r -F -d 'Trust the certificate authorities in FILE too'
complete -c quillmar-tunnel -n '__fish_seen_subcommand_from serve' -l endpoint -x -d 'Ask this https URL'
complete -c quillmar-tunnel -n '__fish_seen_subcommand_from serve' -l listen -x -d 'Answer there, over UDP and TCP'
