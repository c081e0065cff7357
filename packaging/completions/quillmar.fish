# fish completion for quillmar(1)
complete -c quillmar -f
complete -c quillmar -l data-dir -x -a '(__fish_complete_directories)' -d 'Keep everything in DIR'
complete -c quillmar -l service -x -d 'Use the service at URL for every region'
complete -c quillmar -l ca-file -r -F -d 'Trust the certificate authorities in FILE too'
complete -c quillmar -l sandbox -d 'Start the stand-in service beside the window and use that'
complete -c quillmar -l simulate-tunnel -d 'Simulate the tunnel: nothing is changed or protected'
complete -c quillmar -s h -l help -d 'Show the options'
complete -c quillmar -l help-all -d 'Show the options of the toolkit too'
complete -c quillmar -s v -l version -d 'Show the version'
complete -c quillmar -n __fish_use_subcommand -a doctor -d 'Say what works on this computer, without a window'
