# fish completion for quillmar-agent(1)
set -l commands enroll run status sync reset doctor
set -l no_command "not __fish_seen_subcommand_from $commands"

complete -c quillmar-agent -f
complete -c quillmar-agent -l help -d 'Show what it takes'

# Before a command
complete -c quillmar-agent -n $no_command -l data-dir -x -a '(__fish_complete_directories)' -d 'Keep everything in DIR'
complete -c quillmar-agent -n $no_command -l service -x -d 'Use the service at URL for every region'
complete -c quillmar-agent -n $no_command -l ca-file -r -F -d 'Trust the certificate authorities in FILE too'
complete -c quillmar-agent -n $no_command -l simulate-tunnel -d 'Simulate the tunnel: nothing is changed or protected'
complete -c quillmar-agent -n $no_command -l version -d 'Show the version'
complete -c quillmar-agent -n $no_command -a enroll -d "Make this computer a child's device"
complete -c quillmar-agent -n $no_command -a run -d 'Keep the protection up, until told to stop'
complete -c quillmar-agent -n $no_command -a status -d 'Show whether this computer is protected'
complete -c quillmar-agent -n $no_command -a sync -d 'Check in now'
complete -c quillmar-agent -n $no_command -a reset -d 'Forget the enrollment'
complete -c quillmar-agent -n $no_command -a doctor -d 'Say what works on this computer'

# Of a command
complete -c quillmar-agent -n '__fish_seen_subcommand_from enroll' -l autostart -d 'Start protection now and with each login'
complete -c quillmar-agent -n '__fish_seen_subcommand_from run' -l verbose -d 'Tell more'
complete -c quillmar-agent -n '__fish_seen_subcommand_from status' -l json -d 'As one JSON object'
complete -c quillmar-agent -n '__fish_seen_subcommand_from reset' -l yes -d 'Without asking'
