#compdef quillmar

_arguments -S \
  '--data-dir[keep everything in DIR]:directory:_files -/' \
  '--service[use the service at URL for every region]:URL:_urls' \
  '--ca-file[trust the certificate authorities in FILE too]:file:_files' \
  '--sandbox[start the stand-in service beside the window and use that]' \
  '--simulate-tunnel[simulate the tunnel: nothing is changed or protected]' \
  '(- *)'{-h,--help}'[show the options]' \
  '(- *)--help-all[show the options of the toolkit too]' \
  '(- *)'{-v,--version}'[show the version]' \
  '::command:((doctor\:"say what works on this computer, without a window"))'
