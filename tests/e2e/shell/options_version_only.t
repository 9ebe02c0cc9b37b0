$ --version
> zelno 1.0.0.1
