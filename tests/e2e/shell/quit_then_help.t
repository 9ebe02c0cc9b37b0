# The loop looks at the quit flag only when the whole line is done.
< quit;help
< help
% include banner
% include listing_after_prompt
