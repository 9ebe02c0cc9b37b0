# A script that can't be read runs nothing and gives 3.
$ --script missing.zelno
! zelno: cannot read script missing.zelno: No such file or directory
% status 3
