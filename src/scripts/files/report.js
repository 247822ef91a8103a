// What the script logs, and tells the program.

const log = logger('files-auto-share: ');

const report = (status, filename, reason = '') =>
    post({type: 'ondrelFilesAutoShare', status, filename, reason});
